// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import assert from 'node:assert/strict';
import { randomBytes } from 'node:crypto';
import http from 'node:http';
import { after, before, beforeEach, test } from 'node:test';

import { ServiceProcess } from './support/serviceProcess.js';
import { tusCreate, tusHeaders, tusOffset, tusPatch } from './support/tusRequests.js';

const SIZE = 400_000;
const movie = randomBytes(SIZE);

/** @type {ServiceProcess} */
let service;
/** @type {any} */
let upload;
let location = '';

before(async () => {
  service = await ServiceProcess.start(['--test-mode', '--transfer', 'tus']);
});
after(() => service.dispose());

beforeEach(async () => {
  await service.call('DELETE', '/test/faults');
  const client = await service.client();
  upload = (await client.sign({ bytes: SIZE })).body.main.upload;
  location = (await tusCreate(upload, SIZE)).headers.get('location') ?? '';
  await service.call('DELETE', '/test/log');
});

/** @param {unknown} action @param {Record<string, unknown>} [more] */
const fault = (action, more = {}) =>
  service.call('POST', '/test/faults', {
    rules: [{ match: { method: 'PATCH', pathPattern: '^/storage/tus/' }, action, ...more }],
  });

/** @returns {Promise<any[]>} */
const patches = async () =>
  (await service.call('GET', '/test/log')).body.requests.filter((/** @type {any} */ entry) => entry.method === 'PATCH');

/** The whole movie in one PATCH; an error for a connection that broke. */
const patchAll = () => tusPatch(upload, location, 0, movie).catch((error) => error);

test('a canned answer is given so many times, after so many requests', async () => {
  await fault({ status: 503, body: { error: 'later' }, headers: { 'Retry-After': '1' } }, { skip: 1, times: 2 });
  const half = movie.subarray(0, SIZE / 2);
  const statuses = [];
  for (let turn = 0; turn < 4; turn += 1) {
    const answer = await tusPatch(upload, location, await tusOffset(upload, location), half);
    statuses.push(answer.status);
    if (answer.status === 503) assert.deepEqual(await answer.json(), { error: 'later' });
  }
  assert.deepEqual(statuses, [204, 503, 503, 204]);
  const { body } = await service.call('GET', '/test/faults');
  assert.deepEqual([body.rules[0].hits, body.rules[0].times], [2, 0]);
});

test('a connection can be cut inside a body, and what came before stays', async () => {
  for (const [action, outcome] of [['resetAfterBytes', 'reset'], ['closeAfterBytes', 'closed']]) {
    const before = await tusOffset(upload, location);
    await fault({ [action]: 100_000 });
    assert.ok((await tusPatch(upload, location, before, movie.subarray(before)).catch((error) => error)) instanceof Error);
    await service.call('GET', '/test/wait?method=PATCH&state=ended');
    const entry = (await patches()).at(-1);
    assert.equal(entry.outcome, outcome);
    assert.ok(entry.bodyBytes >= 100_000);
    assert.equal(await tusOffset(upload, location), before + 100_000);
  }
});

test('an answer can be lost after the work was done', async () => {
  await fault('swallowAnswer');
  assert.ok((await patchAll()) instanceof Error);
  assert.equal(await tusOffset(upload, location), SIZE);
  assert.equal((await patches())[0].outcome, 'swallowed');
});

test('an answer can be cut inside its first line', async () => {
  await fault({ cutAnswerAfterBytes: 7 });
  const received = await new Promise((resolve) => {
    const request = http.request(location, {
      method: 'PATCH',
      headers: tusHeaders(upload, {
        'Upload-Offset': '0', 'Content-Type': 'application/offset+octet-stream', 'Content-Length': SIZE,
      }),
    });
    let text = '';
    request.on('socket', (socket) => socket.on('data', (data) => (text += data)));
    request.on('error', () => resolve(text));
    request.end(movie);
  });
  assert.equal(received, 'HTTP/1.');
  assert.equal(await tusOffset(upload, location), SIZE);
});

test('the offset of an answer can be wrong or missing while the upload is right', async () => {
  await fault({ wrongOffset: -5 });
  const wrong = await tusPatch(upload, location, 0, movie.subarray(0, 1000));
  assert.equal(wrong.headers.get('upload-offset'), '995');
  await fault('missingOffset');
  const missing = await tusPatch(upload, location, 1000, movie.subarray(1000, 2000));
  assert.deepEqual([missing.status, missing.headers.get('upload-offset')], [204, null]);
  assert.equal(await tusOffset(upload, location), 2000);
});

test('an answer can be replaced after the work was done', async () => {
  await fault({ answerStatus: 502, answerBody: '<html>bad gateway</html>', answerHeaders: { 'Content-Type': 'text/html' } });
  const answer = await patchAll();
  assert.deepEqual([answer.status, await answer.text()], [502, '<html>bad gateway</html>']);
  assert.equal(await tusOffset(upload, location), SIZE);
});

test('a captive portal is a rule like any other', async () => {
  const page = '<html>Please sign in to the network</html>';
  await service.call('POST', '/test/faults', {
    rules: [{ match: { pathPattern: '^/v1/' }, times: null,
      action: { status: 200, rawBody: page, headers: { 'Content-Type': 'text/html' } } }],
  });
  for (let turn = 0; turn < 3; turn += 1) {
    assert.equal((await service.call('GET', '/v1/capture/limits')).body, page);
  }
});

test('a body can stop being read, and go on', async () => {
  await fault({ stallAfterBytes: 50_000, stallMs: 300 });
  const startedAt = performance.now();
  assert.equal((await patchAll()).status, 204);
  assert.ok(performance.now() - startedAt >= 300);
  assert.equal(await tusOffset(upload, location), SIZE);
});

test('a slow line takes as long as its bytes', async () => {
  await fault({ throttleBytesPerSecond: 1_000_000 });
  const startedAt = performance.now();
  assert.equal((await patchAll()).status, 204);
  const elapsed = performance.now() - startedAt;
  assert.ok(elapsed > 250, `${elapsed} ms`);
});

test('a stalled request ends when its client gives up', async () => {
  await fault('stall');
  const answer = await fetch(location, {
    method: 'PATCH', body: movie, signal: AbortSignal.timeout(200),
    headers: tusHeaders(upload, { 'Upload-Offset': '0', 'Content-Type': 'application/offset+octet-stream' }),
  }).catch((error) => error);
  assert.equal(answer.name, 'TimeoutError');
  await service.call('GET', '/test/wait?method=PATCH&state=ended');
  assert.equal((await patches())[0].outcome, 'stalled');
});

test('the log tells requests, their offsets and their connections apart', async () => {
  const agent = new http.Agent({ keepAlive: true, maxSockets: 1 });
  const get = () =>
    new Promise((resolve) => {
      http.get(`${service.url}/v1/capture/limits`, { agent }, (answer) => answer.resume().on('end', resolve));
    });
  await get();
  await get();
  agent.destroy();
  await tusPatch(upload, location, 0, movie.subarray(0, 10));
  const { requests } = (await service.call('GET', '/test/log')).body;
  const [first, second, patch] = requests;
  assert.equal(first.connection, second.connection);
  assert.notEqual(first.connection, patch.connection);
  assert.equal(patch.headers['upload-offset'], '0');
  assert.equal(patch.answerHeaders['upload-offset'], '10');
  assert.deepEqual([patch.bodyBytes, patch.status, patch.headers['x-signature']], [10, 204, '(present)']);
});

test('a mistyped fault is refused', async () => {
  assert.equal((await fault({ resetAfterByte: 5 })).status, 400);
  assert.equal((await fault({ status: '503' })).status, 400);
  assert.equal((await fault('swallow')).status, 400);
});

test('without test mode there is no control panel', async () => {
  const plain = await ServiceProcess.start();
  try {
    assert.equal((await plain.call('GET', '/test/log')).status, 404);
    assert.equal((await plain.call('POST', '/test/keys', {})).status, 404);
  } finally {
    await plain.dispose();
  }
});
