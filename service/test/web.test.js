// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import assert from 'node:assert/strict';
import { readFileSync, readdirSync, writeFileSync } from 'node:fs';
import http from 'node:http';
import path from 'node:path';
import { after, before, test } from 'node:test';

import Database from 'libsql';

import { eventually } from './support/eventually.js';
import { Client, ServiceProcess } from './support/serviceProcess.js';

/** @type {ServiceProcess} */
let service;
/** The owner's browser. */
let cookie = '';
/** @type {{Origin: string, Cookie: string}} what it sends with a form */
let own;

before(async () => {
  service = await ServiceProcess.start(['--test-mode']);
  cookie = await service.signIn();
  own = { Origin: service.url, Cookie: cookie };
});
after(() => service.dispose());

/** A browser's view of a page with one form. @param {ServiceProcess} on @param {string} path @param {string} withCookie */
async function openForm(on, path, withCookie = cookie) {
  const page = await on.call('GET', path, undefined, { Accept: 'text/html', Cookie: withCookie });
  const token = /name="token" value="([^"]+)"/.exec(page.body)?.[1] ?? '';
  return { page, token, setCookie: page.headers.get('set-cookie')?.split(';')[0] ?? '' };
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
  const { page, token } = await openForm(service, path);
  assert.match(page.headers.get('content-security-policy') ?? '', /frame-ancestors 'none'/);
  // Names from devices are shown as text.
  assert.match(page.body, /Laptop &lt;script&gt;/);
  assert.doesNotMatch(page.body, /<script>alert/);

  const elsewhere = (await pairingPath()).path;
  const { token: tokenOfAnother } = await openForm(service, elsewhere);
  const good = { token, decision: 'approved' };
  const attempts = {
    'another origin': await post(service, path, good, { ...own, Origin: 'http://evil.example' }),
    'another port': await post(service, path, good, { ...own, Origin: 'http://127.0.0.1:1' }),
    'a null origin': await post(service, path, good, { ...own, Origin: 'null' }),
    'no origin': await post(service, path, good, { Cookie: cookie }),
    'no token': await post(service, path, { decision: 'approved' }, own),
    "another form's token": await post(service, path, { ...good, token: tokenOfAnother }, own),
  };
  for (const [name, { status }] of Object.entries(attempts)) assert.equal(status, 403, name);
  assert.equal((await post(service, path, good, { Origin: service.url })).status, 401, 'no cookie');
  const get = await service.call('GET', `${path}?decision=approved&token=${token}`, undefined, { Cookie: cookie });
  assert.equal(get.status, 200);
  assert.deepEqual((await service.call('POST', '/v1/keys/poll', { deviceCode })).body, { status: 'pending' });

  assert.equal((await post(service, path, good, own)).status, 303);
});

test('a disconnected device is refused from then on', async () => {
  const client = await service.client();
  const { page } = await openForm(service, '/devices');
  const forms = [...page.body.matchAll(/action="(\/devices\/[^"]+)"><input type="hidden" name="token" value="([^"]+)"/g)];
  const [, action, token] = forms.at(-1) ?? [];
  assert.equal((await client.call('GET', '/v1/capture/limits')).status, 200);
  await post(service, action, { token }, own);
  assert.equal((await client.call('GET', '/v1/capture/limits')).status, 401);
});

test('a project made on the page is offered to applications', async () => {
  const { token } = await openForm(service, '/projects');
  const answer = await post(service, '/projects', { token, name: '  Talks\u202e ' }, own);
  assert.equal(answer.status, 303);
  const client = await service.client();
  const { body } = await client.call('GET', '/v1/capture/projects');
  assert.deepEqual(body.projects.map((/** @type {any} */ project) => project.name), ['My captures', 'Talks']);
  const editor = await service.call('GET', `/editor/${body.projects[1].id}`, undefined, { Cookie: cookie });
  assert.deepEqual([editor.status, editor.headers.get('location')], [303, `/?project=${body.projects[1].id}`]);
});

/** @param {Client} client @param {string} content @param {{captureId?: string, sidecar?: string}} [more] @returns {Promise<string>} */
async function uploaded(client, content, { captureId = crypto.randomUUID(), sidecar } = {}) {
  const { body } = await client.sign({ captureId, bytes: content.length, meta: sidecar !== undefined });
  await fetch(body.main.upload.uploadUrl, { method: 'PUT', body: content });
  if (sidecar !== undefined) await fetch(body.meta.uploadUrl, { method: 'PUT', body: sidecar });
  assert.equal((await client.confirm(body.assetId)).status, 200);
  return body.assetId;
}

test('a deletion that a crash cuts off is finished by the next start, and the file is never readable again', async () => {
  let client = await service.client();
  const captureId = crypto.randomUUID();
  const assetId = await uploaded(client, '12345', { captureId });
  const page = `/captures/${assetId}`;
  const folder = path.join(service.data, 'objects', assetId);
  // Enough to remove for a while.
  for (let number = 0; number < 5000; number += 1) writeFileSync(path.join(folder, `filler.${number}`), '');
  const { token } = await openForm(service, page);
  const deletion = post(service, `${page}/delete`, { token }, own).catch(() => {});
  const db = new Database(path.join(service.data, 'library.db'));
  await eventually(async () => db.prepare('SELECT count(*) AS n FROM assets WHERE id = ?').get(assetId).n === 0);
  await service.stop('SIGKILL');
  db.close();
  await deletion;
  assert.ok(readdirSync(folder).length > 0, 'the crash came too late to show anything');

  service = await service.restart();
  own.Origin = service.url;
  cookie = own.Cookie = await service.signIn();
  client = new Client(service, client.apiKey);
  assert.equal((await client.call('GET', `${page}/main`)).status, 404);
  await eventually(async () => !readdirSync(path.dirname(folder)).includes(assetId));
  assert.equal((await client.sign({ captureId })).status, 200);
});

test('a sidecar of any size and shape neither starves the service nor breaks the page', async () => {
  const client = await service.client();
  const odd = { toString: 1 };
  const oddSidecar = JSON.stringify({
    source: odd, window: { title: odd, appName: 'x'.repeat(300) }, display: { scaleFactor: '2' },
    pixelSize: { width: { valueOf: 2 }, height: 1e308 }, recording: [{ cursorInVideo: true }],
  });
  const events = Buffer.alloc(15_000_000, '{},').toString();
  const hugeSidecar = `{"recording":{"events":[${events}{}],"cursorInVideo":false},"window":{"title":"A \\"b\\" \u00fc"}}`;
  const pages = [];
  for (const sidecar of [oddSidecar, hugeSidecar, '{"window":{"title":"cut off', `${'['.repeat(1e5)}`]) {
    const assetId = await uploaded(client, '12345', { sidecar });
    pages.push(await service.call('GET', `/captures/${assetId}`, undefined, { Cookie: cookie }));
  }
  assert.deepEqual(pages.map(({ status }) => status), [200, 200, 200, 200]);
  assert.match(pages[0].body, />x{200}</);
  assert.match(pages[1].body, /A &quot;b&quot; ü<.*As a layer/s);
  const peak = Number(/VmHWM:\s+(\d+)/.exec(readFileSync(`/proc/${service.pid}/status`, 'utf8'))?.[1]) / 1024;
  assert.ok(peak < 300, `${peak} MiB`);
});

test('files are served in ranges', async () => {
  const url = `${service.url}/captures/${await uploaded(await service.client(), '0123456789')}/main`;
  const cases = {
    'bytes=2-4': [206, '234', 'bytes 2-4/10'],
    'bytes=7-': [206, '789', 'bytes 7-9/10'],
    'bytes=-3': [206, '789', 'bytes 7-9/10'],
    'bytes=5-99': [206, '56789', 'bytes 5-9/10'],
    'bytes=0-1,3-4': [200, '0123456789', null],
  };
  for (const [range, expected] of Object.entries(cases)) {
    const answer = await fetch(url, { headers: { Range: range, Cookie: cookie } });
    assert.deepEqual([answer.status, await answer.text(), answer.headers.get('content-range')], expected, range);
  }
  const beyond = await fetch(url, { headers: { Range: 'bytes=10-', Cookie: cookie } });
  assert.deepEqual([beyond.status, beyond.headers.get('content-range')], [416, 'bytes */10']);
});

test('a stranger behind a reverse proxy is not taken for the owner, and gets no key', async () => {
  // All that a plain proxy on this machine leaves of a stranger: our own address, our own name.
  const status = (/** @type {string} */ method, /** @type {string} */ target, headers = {}) =>
    new Promise((resolve, reject) => {
      const { hostname, port } = new URL(service.url);
      const request = http.request({ hostname, port, method, path: target, headers: { 'Content-Type': 'application/json', ...headers } });
      request.on('response', (answer) => resolve(answer.resume().statusCode)).on('error', reject);
      request.end(method === 'POST' ? '{}' : undefined);
    });
  const { path: pairing } = await pairingPath();
  for (const page of ['/', '/devices', pairing, '/library/captures']) assert.equal(await status('GET', page), 401, page);
  assert.equal(await status('POST', '/test/keys'), 403);
  assert.equal(await status('POST', '/x/../test/keys', { 'X-Control-Key': 'guess' }), 403);

  const signInPath = service.signInUrl.slice(service.url.length);
  // The address that was printed has worked once; the browser that used it may open it again.
  assert.equal(await status('GET', signInPath), 403);
  assert.equal(await status('GET', signInPath, { Cookie: cookie }), 303);
  assert.ok(!service.stderr.includes(new URL(service.signInUrl).searchParams.get('code') ?? '?'));
});

test('with an owner password, pages and files ask for it', async () => {
  const guarded = await ServiceProcess.start(['--test-mode'], { env: { VANTRELL_OWNER_PASSWORD: 'correct horse' } });
  try {
    const html = { Accept: 'text/html' };
    const refused = await guarded.call('GET', '/devices', undefined, html);
    assert.deepEqual([refused.status, refused.headers.get('location')], [303, '/login?next=%2Fdevices']);
    assert.equal((await guarded.call('GET', '/library/captures')).status, 401);

    const { token, setCookie, page } = await openForm(guarded, '/login?next=//evil.example/', '');
    assert.match(page.body, /name="next" value="\/"/);
    assert.match(page.headers.get('set-cookie') ?? '', /HttpOnly; SameSite=Lax/);
    const own = { Origin: guarded.url, Cookie: setCookie };
    assert.equal((await post(guarded, '/login', { token, password: 'wrong' }, own)).status, 403);
    const entered = await post(guarded, '/login', { token, password: 'correct horse', next: '/devices' }, own);
    assert.deepEqual([entered.status, entered.headers.get('location')], [303, '/devices']);
    const session = entered.headers.get('set-cookie')?.split(';')[0] ?? '';
    assert.notEqual(session, setCookie);
    assert.equal((await guarded.call('GET', '/library/captures', undefined, { Cookie: session })).status, 200);
    assert.equal((await guarded.call('GET', '/library/captures', undefined, { Cookie: setCookie })).status, 401);

    for (let turn = 0; turn < 9; turn += 1) await post(guarded, '/login', { token, password: 'wrong' }, own);
    assert.equal((await post(guarded, '/login', { token, password: 'correct horse' }, own)).status, 429);
  } finally {
    await guarded.dispose();
  }
});
