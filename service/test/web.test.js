// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import assert from 'node:assert/strict';
import { after, before, test } from 'node:test';

import { ServiceProcess } from './support/serviceProcess.js';

/** @type {ServiceProcess} */
let service;

before(async () => {
  service = await ServiceProcess.start(['--test-mode']);
});
after(() => service.dispose());

/** A browser's view of a page with one form. @param {ServiceProcess} on @param {string} path @param {string} [cookie] */
async function openForm(on, path, cookie = '') {
  const page = await on.call('GET', path, undefined, { Accept: 'text/html', ...(cookie ? { Cookie: cookie } : {}) });
  const token = /name="token" value="([^"]+)"/.exec(page.body)?.[1] ?? '';
  return { page, token, cookie: page.headers.get('set-cookie')?.split(';')[0] ?? cookie };
}

/**
 * @param {ServiceProcess} on @param {string} path @param {Record<string, string>} fields
 * @param {Record<string, string>} headers
 */
const post = (on, path, fields, headers) =>
  fetch(on.url + path, { method: 'POST', body: new URLSearchParams(fields), headers, redirect: 'manual' });

async function pairingPath() {
  const { body } = await service.call('POST', '/v1/keys/request', { name: 'Laptop <script>alert(1)</script>' });
  return { path: new URL(body.approvalUrl).pathname, deviceCode: body.deviceCode };
}

test('only the page itself can approve a device', async () => {
  const { path, deviceCode } = await pairingPath();
  const { page, token, cookie } = await openForm(service, path);
  assert.match(page.headers.get('content-security-policy') ?? '', /frame-ancestors 'none'/);
  assert.match(page.headers.get('set-cookie') ?? '', /HttpOnly; SameSite=Lax/);

  const elsewhere = (await pairingPath()).path;
  const { token: tokenOfAnother } = await openForm(service, elsewhere, cookie);
  const good = { token, decision: 'approved' };
  const own = { Origin: service.url, Cookie: cookie };
  const attempts = {
    'another origin': await post(service, path, good, { ...own, Origin: 'http://evil.example' }),
    'another port': await post(service, path, good, { ...own, Origin: 'http://127.0.0.1:1' }),
    'a null origin': await post(service, path, good, { ...own, Origin: 'null' }),
    'no origin': await post(service, path, good, { Cookie: cookie }),
    'no cookie': await post(service, path, good, { Origin: service.url }),
    'no token': await post(service, path, { decision: 'approved' }, own),
    "another form's token": await post(service, path, { ...good, token: tokenOfAnother }, own),
  };
  for (const [name, { status }] of Object.entries(attempts)) assert.equal(status, 403, name);
  const get = await service.call('GET', `${path}?decision=approved&token=${token}`, undefined, { Cookie: cookie });
  assert.equal(get.status, 200);
  assert.deepEqual((await service.call('POST', '/v1/keys/poll', { deviceCode })).body, { status: 'pending' });

  assert.equal((await post(service, path, good, own)).status, 303);
});

test('names from devices are shown as text', async () => {
  const { path } = await pairingPath();
  const { page } = await openForm(service, path);
  assert.match(page.body, /Laptop &lt;script&gt;/);
  assert.doesNotMatch(page.body, /<script>alert/);
});

test('a disconnected device is refused from then on', async () => {
  const client = await service.client();
  const { page, cookie } = await openForm(service, '/devices');
  const forms = [...page.body.matchAll(/action="(\/devices\/[^"]+)"><input type="hidden" name="token" value="([^"]+)"/g)];
  const [, action, token] = forms.at(-1) ?? [];
  assert.equal((await client.call('GET', '/v1/capture/limits')).status, 200);
  await post(service, action, { token }, { Origin: service.url, Cookie: cookie });
  assert.equal((await client.call('GET', '/v1/capture/limits')).status, 401);
});

test('a project made on the page is offered to applications', async () => {
  const { token, cookie } = await openForm(service, '/projects');
  const answer = await post(service, '/projects', { token, name: '  Talks\u202e ' }, { Origin: service.url, Cookie: cookie });
  assert.equal(answer.status, 303);
  const client = await service.client();
  const { body } = await client.call('GET', '/v1/capture/projects');
  assert.deepEqual(body.projects.map((/** @type {any} */ project) => project.name), ['My captures', 'Talks']);
  const editor = await service.call('GET', `/editor/${body.projects[1].id}`);
  assert.deepEqual([editor.status, editor.headers.get('location')], [303, `/?project=${body.projects[1].id}`]);
});

test('a deleted capture is gone, file and all, and may be sent anew', async () => {
  const client = await service.client();
  const captureId = crypto.randomUUID();
  const { body } = await client.sign({ captureId, bytes: 5 });
  await fetch(body.main.upload.uploadUrl, { method: 'PUT', body: '12345' });
  await client.confirm(body.assetId);
  const page = `/captures/${body.assetId}`;
  const { token, cookie } = await openForm(service, page);
  await post(service, `${page}/delete`, { token }, { Origin: service.url, Cookie: cookie });
  assert.equal((await client.call('GET', `${page}/main`)).status, 404);
  assert.equal((await client.sign({ captureId })).status, 200);
});

test('files are served in ranges', async () => {
  const client = await service.client();
  const { body } = await client.sign({ bytes: 10 });
  await fetch(body.main.upload.uploadUrl, { method: 'PUT', body: '0123456789' });
  await client.confirm(body.assetId);
  const url = `${service.url}/captures/${body.assetId}/main`;
  const cases = {
    'bytes=2-4': [206, '234', 'bytes 2-4/10'],
    'bytes=7-': [206, '789', 'bytes 7-9/10'],
    'bytes=-3': [206, '789', 'bytes 7-9/10'],
    'bytes=5-99': [206, '56789', 'bytes 5-9/10'],
    'bytes=0-1,3-4': [200, '0123456789', null],
  };
  for (const [range, expected] of Object.entries(cases)) {
    const answer = await fetch(url, { headers: { Range: range } });
    assert.deepEqual([answer.status, await answer.text(), answer.headers.get('content-range')], expected, range);
  }
  const beyond = await fetch(url, { headers: { Range: 'bytes=10-' } });
  assert.deepEqual([beyond.status, beyond.headers.get('content-range')], [416, 'bytes */10']);
});

test('a request that came through a proxy is not taken for the owner', async () => {
  const answer = await service.call('GET', '/', undefined, { 'X-Forwarded-For': '203.0.113.9' });
  assert.equal(answer.status, 403);
});

test('with an owner password, pages and files ask for it', async () => {
  const guarded = await ServiceProcess.start(['--test-mode'], { env: { VANTRELL_OWNER_PASSWORD: 'correct horse' } });
  try {
    const html = { Accept: 'text/html' };
    const refused = await guarded.call('GET', '/devices', undefined, html);
    assert.deepEqual([refused.status, refused.headers.get('location')], [303, '/login?next=%2Fdevices']);
    assert.equal((await guarded.call('GET', '/library/captures')).status, 401);

    const { token, cookie, page } = await openForm(guarded, '/login?next=//evil.example/');
    assert.match(page.body, /name="next" value="\/"/);
    const own = { Origin: guarded.url, Cookie: cookie };
    assert.equal((await post(guarded, '/login', { token, password: 'wrong' }, own)).status, 403);
    const entered = await post(guarded, '/login', { token, password: 'correct horse', next: '/devices' }, own);
    assert.deepEqual([entered.status, entered.headers.get('location')], [303, '/devices']);
    const session = entered.headers.get('set-cookie')?.split(';')[0] ?? '';
    assert.notEqual(session, cookie);
    assert.equal((await guarded.call('GET', '/library/captures', undefined, { Cookie: session })).status, 200);
    assert.equal((await guarded.call('GET', '/library/captures', undefined, { Cookie: cookie })).status, 401);

    for (let turn = 0; turn < 9; turn += 1) await post(guarded, '/login', { token, password: 'wrong' }, own);
    assert.equal((await post(guarded, '/login', { token, password: 'correct horse' }, own)).status, 429);
  } finally {
    await guarded.dispose();
  }
});
