// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import assert from 'node:assert/strict';
import { once } from 'node:events';
import net from 'node:net';
import { after, before, test } from 'node:test';

import { Client, ServiceProcess } from './support/serviceProcess.js';

/** @type {ServiceProcess} */
let service;
/** @type {Client} */
let client;

before(async () => {
  service = await ServiceProcess.start(['--test-mode', '--max-upload-bytes', '50000', '--max-duration-ms', '60000']);
  client = await service.client();
});
after(() => service.dispose());

/** @param {string} url @param {string|Uint8Array} body */
const put = (url, body) => fetch(url, { method: 'PUT', body, headers: { 'Content-Type': 'video/quicktime' } });

test('an unknown or revoked key is refused in the words that disconnect an application', async () => {
  const refusal = { error: 'Invalid or revoked API key' };
  const stranger = await new Client(service, 'vck_no-such-key').call('GET', '/v1/capture/projects');
  assert.deepEqual([stranger.status, stranger.body], [401, refusal]);

  const doomed = await service.client();
  assert.equal((await doomed.call('GET', '/v1/capture/limits')).status, 200);
  await service.call('POST', '/test/keys/revoke', { apiKey: doomed.apiKey });
  const revoked = await doomed.call('GET', '/v1/capture/limits');
  assert.deepEqual([revoked.status, revoked.body], [401, refusal]);

  const anonymous = await service.call('GET', '/v1/capture/projects');
  assert.equal(anonymous.status, 401);
  assert.notDeepEqual(anonymous.body, refusal);
});

test('projects and limits have the shape that applications decode', async () => {
  const { body } = await client.call('GET', '/v1/capture/projects');
  assert.equal(body.projects[0].name, 'My captures');
  assert.deepEqual(Object.keys(body.projects[0]), ['id', 'name']);
  const limits = await client.call('GET', '/v1/capture/limits');
  assert.deepEqual(limits.body, { plan: 'Self-hosted', maxVideoDurationMs: 60000, maxVideoUploadBytes: 50000 });
});

test('a capture goes from sign to confirm and is then known as uploaded', async () => {
  const captureId = crypto.randomUUID();
  const movie = new Uint8Array(2000).fill(7);
  const signed = await client.sign({
    captureId, bytes: 2000, thumb: { mime: 'image/jpeg', bytes: 300 }, meta: true,
  });
  assert.equal(signed.status, 200);
  const { assetId, main, thumb, meta } = signed.body;
  assert.equal(main.upload.kind, 'standard');
  assert.equal((await put(main.upload.uploadUrl, movie)).status, 200);
  assert.equal((await put(thumb.uploadUrl, new Uint8Array(300))).status, 200);
  assert.equal((await put(meta.uploadUrl, '{"version":1}')).status, 200);
  assert.equal((await client.confirm(assetId)).status, 200);
  assert.equal((await client.confirm(assetId)).status, 200);

  const capture = await client.capture(assetId);
  const digest = Buffer.from(await crypto.subtle.digest('SHA-256', movie)).toString('hex');
  assert.equal(capture.sha256, digest);
  assert.deepEqual([capture.status, capture.hasThumb, capture.hasMeta], ['confirmed', true, true]);
  assert.equal(main.publicUrl, capture.url);

  const again = await client.sign({ captureId: captureId.toUpperCase() });
  assert.deepEqual([again.status, again.body.assetId], [409, assetId]);
  const refreshed = await client.call('POST', `/v1/capture/${assetId}/refresh`);
  assert.deepEqual([refreshed.status, refreshed.body.assetId], [409, assetId]);
  assert.equal((await put(main.upload.uploadUrl, movie)).status, 409);
});

test('signing a pending capture again gives the same asset, in the project chosen last', async () => {
  const captureId = crypto.randomUUID();
  const first = await client.sign({ captureId });
  assert.deepEqual(Object.keys(first.body), ['assetId', 'projectId', 'main']);
  const other = await service.call('POST', '/test/projects', { name: 'Elsewhere' });
  const second = await client.sign({ captureId, projectId: other.body.id });
  assert.equal(second.body.assetId, first.body.assetId);
  assert.equal(second.body.projectId, other.body.id);
  assert.equal(second.body.main.path, first.body.main.path);
});

test('a deleted project is told apart from every other 404', async () => {
  const { body: project } = await service.call('POST', '/test/projects', { name: 'Doomed' });
  const { body: pending } = await client.sign({ projectId: project.id });
  await service.call('DELETE', `/test/projects/${project.id}`);
  const gone = { error: 'Project not found' };
  for (const answer of [
    await client.sign({ projectId: project.id }),
    await client.sign({ projectId: 'prj_never' }),
    await client.call('POST', `/v1/capture/${pending.assetId}/refresh`),
    await client.confirm(pending.assetId),
  ]) {
    assert.deepEqual([answer.status, answer.body], [404, gone]);
  }
  const unknown = await client.confirm('cap_never');
  assert.equal(unknown.status, 404);
  assert.notDeepEqual(unknown.body, gone);
});

test('a capture that is announced anew during its confirmation is confirmed with the size of its file or not at all', async () => {
  for (let turn = 0; turn < 20; turn += 1) {
    const captureId = crypto.randomUUID();
    const { body } = await client.sign({ captureId, bytes: 100 });
    await put(body.main.upload.uploadUrl, new Uint8Array(100));
    await Promise.all([client.confirm(body.assetId), client.sign({ captureId, bytes: 150 })]);
    const { status, bytes } = await client.capture(body.assetId);
    assert.ok(status === 'pending' || bytes === 100, `${status} with ${bytes} bytes`);
  }
});

test('a client that hangs up inside an upload does not end the service', async () => {
  const { body } = await client.sign({ bytes: 5000 });
  const { pathname, search, hostname, port } = new URL(body.main.upload.uploadUrl);
  for (let turn = 0; turn < 100; turn += 1) {
    const socket = net.connect(Number(port), hostname);
    await once(socket, 'connect');
    socket.on('error', () => {});
    socket.write(`PUT ${pathname}${search} HTTP/1.1\r\nHost: ${hostname}:${port}\r\nContent-Length: 5000\r\n\r\nabc`);
    // At once, and a little later: between the arrival of the headers and the first look at the body.
    for (let pause = 0; pause < turn % 5; pause += 1) await new Promise(setImmediate);
    socket.resetAndDestroy();
  }
  assert.equal((await put(body.main.upload.uploadUrl, new Uint8Array(5000))).status, 200, service.stderr);
});

test('the plan limits recordings and not screenshots', async () => {
  assert.equal((await client.sign({ bytes: 50000 })).status, 200);
  const large = await client.sign({ bytes: 50001 });
  assert.equal(large.status, 413);
  assert.match(large.body.error, /size limit/);
  assert.equal((await client.sign({ durationMs: 70000 })).status, 413);
  assert.equal((await client.sign({ durationMs: 60020 })).status, 200);
  const still = { kind: 'image', mime: 'image/png', bytes: 50001 };
  assert.equal((await client.sign(still)).status, 200);
});

test('malformed registrations are refused with the name of what is wrong', async () => {
  const cases = {
    projectId: { projectId: 7 },
    captureId: { captureId: 'not-a-uuid' },
    kind: { kind: 'audio' },
    mime: { mime: 'image/svg+xml', kind: 'image' },
    bytes: { bytes: 1.5 },
    durationMs: { durationMs: -1 },
    'thumb.mime': { thumb: { mime: 'image/png', bytes: 1 } },
    meta: { meta: 'yes' },
  };
  for (const [field, facts] of Object.entries(cases)) {
    const { status, body } = await client.sign(facts);
    assert.equal(status, 400, field);
    assert.match(body.error, new RegExp(`^${field} `));
  }
  const headers = { Authorization: `Bearer ${client.apiKey}`, 'Content-Type': 'application/json' };
  const send = (/** @type {string} */ body) =>
    fetch(`${service.url}/v1/capture/sign`, { method: 'POST', headers, body });
  assert.equal((await send('{')).status, 400);
  assert.equal((await send('[]')).status, 400);
  assert.equal((await send(`{"name":"${'x'.repeat(1100000)}"}`)).status, 413);
});

test('a pre-signed URL is good for its object and length only', async () => {
  const { body } = await client.sign({ bytes: 100, thumb: { mime: 'image/jpeg', bytes: 100 } });
  const { uploadUrl } = body.main.upload;
  assert.equal((await put(uploadUrl, new Uint8Array(99))).status, 400);
  assert.equal((await put(uploadUrl, new Uint8Array(101))).status, 413);
  assert.equal((await put(uploadUrl.replace(/.$/, (last) => (last === 'A' ? 'B' : 'A')), new Uint8Array(100))).status, 403);
  const thumbOnMain = uploadUrl.split('?')[0] + new URL(body.thumb.uploadUrl).search;
  assert.equal((await put(thumbOnMain, new Uint8Array(100))).status, 403);

  await service.call('POST', '/test/config', { grantLifetimeMs: -1 });
  const stale = (await client.call('POST', `/v1/capture/${body.assetId}/refresh`)).body.main.upload.uploadUrl;
  await service.call('POST', '/test/config', { grantLifetimeMs: 86400000 });
  assert.equal((await put(stale, new Uint8Array(100))).status, 403);
  assert.equal((await put(uploadUrl, new Uint8Array(100))).status, 200);
});

test('accounts do not see or touch what belongs to another', async () => {
  const other = await service.client('somebody else');
  const projectId = await client.projectId();
  assert.deepEqual((await other.call('GET', '/v1/capture/projects')).body.projects, []);
  assert.equal((await other.sign({ projectId })).status, 404);
  const captureId = crypto.randomUUID();
  const { body: mine } = await client.sign({ captureId, bytes: 0 });
  await put(mine.main.upload.uploadUrl, new Uint8Array(0));
  for (const action of ['refresh', 'confirm']) {
    assert.equal((await other.call('POST', `/v1/capture/${mine.assetId}/${action}`)).status, 404);
  }
  assert.equal((await client.confirm(mine.assetId)).status, 200);
  assert.equal((await other.call('GET', `/captures/${mine.assetId}/main`)).status, 404);
  assert.deepEqual((await other.call('GET', '/library/captures')).body.captures, []);

  // One capture id in two accounts is two captures.
  const { body: project } = await service.call('POST', '/test/projects', { name: 'Theirs', account: 'somebody else' });
  const theirs = await other.sign({ captureId, projectId: project.id });
  assert.equal(theirs.status, 200);
  assert.notEqual(mine.assetId, theirs.body.assetId);
});

test('usage events are kept once each, and a bad one refuses its batch', async () => {
  const event = { id: crypto.randomUUID(), name: 'cap.upload_completed', props: { kind: 'video', mb: 3, fast: true } };
  assert.equal((await client.call('POST', '/v1/capture/events', { events: [event] })).status, 200);
  assert.equal((await client.call('POST', '/v1/capture/events', { events: [event] })).status, 200);
  const bad = { id: 'x', name: 'cap.Bad', props: {} };
  assert.equal((await client.call('POST', '/v1/capture/events', { events: [event, bad] })).status, 400);
  const { body } = await service.call('GET', '/test/events');
  assert.deepEqual(body.events.map(({ id, name, props }) => ({ id, name, props })), [event]);
});

test('requests for another host name are refused', async () => {
  const { hostname, port } = new URL(service.url);
  const http = await import('node:http');
  const status = await new Promise((resolve, reject) => {
    const options = { hostname, port, path: '/library/captures', headers: { Host: `evil.example:${port}` } };
    http.get(options, (answer) => resolve(answer.resume().statusCode)).on('error', reject);
  });
  assert.equal(status, 421);
});

test('the log holds no key and no signature', async () => {
  const { body } = await client.sign({ bytes: 10 });
  await put(body.main.upload.uploadUrl, new Uint8Array(10));
  assert.match(service.stderr, /PUT \/storage\/put\//);
  const signature = new URL(body.main.upload.uploadUrl).searchParams.get('signature') ?? '';
  assert.ok(!service.stderr.includes(client.apiKey));
  assert.ok(!service.stderr.includes(signature));
});
