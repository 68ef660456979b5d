// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import assert from 'node:assert/strict';
import { after, before, test } from 'node:test';

import { Client, ServiceProcess } from './support/serviceProcess.js';

const INTERVAL_MS = 150;

/** @type {ServiceProcess} */
let service;

before(async () => {
  service = await ServiceProcess.start(['--test-mode', '--pairing-interval-ms', String(INTERVAL_MS)]);
});
after(() => service.dispose());

/** @returns {Promise<{deviceCode: string, code: string, body: any}>} */
async function request(name = 'Vantrell Capture (test)') {
  const { status, body } = await service.call('POST', '/v1/keys/request', { name });
  assert.equal(status, 201);
  return { deviceCode: body.deviceCode, code: body.approvalUrl.split('/').at(-1), body };
}

/** @param {string} deviceCode */
const poll = async (deviceCode) => (await service.call('POST', '/v1/keys/poll', { deviceCode })).body;
const decide = (/** @type {string} */ code, /** @type {string} */ what) =>
  service.call('POST', `/test/pairing/${code}/${what}`);
/** A device that keeps to the interval: the wait is what is being tested. */
const interval = () => new Promise((resolve) => setTimeout(resolve, INTERVAL_MS));

test('an approved device gets a working key exactly once', async () => {
  const { deviceCode, code, body } = await request();
  assert.deepEqual(Object.keys(body), ['deviceCode', 'approvalUrl', 'pollIntervalSeconds', 'expiresInSeconds']);
  assert.ok(!body.approvalUrl.includes(deviceCode));
  assert.deepEqual(await poll(deviceCode), { status: 'pending' });
  assert.equal((await decide(code, 'approve')).status, 204);
  await interval();
  const approved = await poll(deviceCode);
  assert.equal(approved.status, 'approved');
  assert.equal((await new Client(service, approved.apiKey).call('GET', '/v1/capture/projects')).status, 200);
  assert.deepEqual(await poll(deviceCode), { status: 'claimed' });
  assert.equal((await decide(code, 'approve')).status, 409);
});

test('a hasty poll learns nothing and does not use up the key', async () => {
  // A busy machine takes longer than the interval now and then: then it was not hasty.
  for (let isHasty = false; !isHasty; ) {
    const { deviceCode, code } = await request();
    const begun = performance.now();
    await poll(deviceCode);
    await decide(code, 'approve');
    const answer = await poll(deviceCode);
    isHasty = performance.now() - begun < INTERVAL_MS;
    if (!isHasty) continue;
    assert.deepEqual(answer, { status: 'pending' });
    await interval();
    assert.equal((await poll(deviceCode)).status, 'approved');
  }
});

test('two polls at once do not get two keys', async () => {
  const { deviceCode, code } = await request();
  await decide(code, 'approve');
  const answers = await Promise.all(Array.from({ length: 6 }, () => poll(deviceCode)));
  assert.equal(answers.filter(({ apiKey }) => apiKey).length, 1);
});

test('a denied device stays denied', async () => {
  const { deviceCode, code } = await request();
  await decide(code, 'deny');
  assert.deepEqual(await poll(deviceCode), { status: 'denied' });
  assert.equal((await decide(code, 'approve')).status, 409);
  assert.deepEqual(await poll(deviceCode), { status: 'denied' });
});

test('after its time a code is worth nothing, approved or not, and looks like one that never was', async () => {
  const waiting = await request();
  const approved = await request();
  await decide(approved.code, 'approve');
  for (const { code } of [waiting, approved]) await decide(code, 'expire');
  assert.deepEqual(await poll(waiting.deviceCode), { status: 'expired' });
  assert.deepEqual(await poll(approved.deviceCode), { status: 'expired' });
  assert.equal((await decide(waiting.code, 'approve')).status, 409);
  assert.deepEqual(await poll('no such code'), { status: 'expired' });
  assert.deepEqual(await poll(waiting.code), { status: 'expired' });
});

test('a pairing outlives a restart of the service', async () => {
  const { deviceCode, code } = await request();
  await service.stop('SIGKILL');
  service = await service.restart();
  await decide(code, 'approve');
  assert.equal((await poll(deviceCode)).status, 'approved');
});

test('neither device codes nor keys are on disk', async () => {
  const { readFileSync, readdirSync } = await import('node:fs');
  const { deviceCode, code } = await request();
  await decide(code, 'approve');
  const { apiKey } = await poll(deviceCode);
  const stored = readdirSync(service.data, { withFileTypes: true })
    .filter((entry) => entry.isFile())
    .map((entry) => readFileSync(`${service.data}/${entry.name}`, 'latin1'))
    .join();
  assert.ok(stored.includes(code));
  assert.ok(!stored.includes(deviceCode));
  assert.ok(!stored.includes(apiKey));
});

test('a flood of requests is stopped', async () => {
  const statuses = new Set();
  for (let turn = 0; turn < 110; turn += 1) {
    statuses.add((await service.call('POST', '/v1/keys/request', { name: `Device ${turn}` })).status);
  }
  assert.deepEqual([...statuses], [201, 429]);
});
