// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import assert from 'node:assert/strict';
import { after, before, test } from 'node:test';

import { LayerSync } from '../src/web/static/layerSync.js';
import { eventually } from './support/eventually.js';
import { ServiceProcess } from './support/serviceProcess.js';

/** @type {ServiceProcess} */
let service;
before(async () => {
  service = await ServiceProcess.start(['--test-mode']);
});
after(() => service.dispose());

/** @param {Awaited<ReturnType<ServiceProcess['client']>>} client @param {Record<string, unknown>} sidecar */
async function upload(client, { durationMs = 20_000, ...sidecar }) {
  const { body } = await client.sign({ bytes: 5, durationMs, meta: true });
  await fetch(body.main.upload.uploadUrl, { method: 'PUT', body: 'movie' });
  await fetch(body.meta.uploadUrl, { method: 'PUT', body: JSON.stringify(sidecar) });
  assert.equal((await client.confirm(body.assetId)).status, 200);
  await eventually(async () => (await client.capture(body.assetId)).sha256 !== null);
  return body.assetId;
}

const sidecar = (/** @type {string} */ source, /** @type {number} */ anchor, /** @type {string} */ capturedAt, more = {}) => ({
  version: 1, type: 'recording', source, capturedAt, pixelSize: { width: 64, height: 48 },
  recording: { fps: 30, durationMs: 20_000, events: [], anchorHostTime: anchor, ...more },
});

test('a recording finds its camera by their id, else by their moments, and no other', async () => {
  const client = await service.client();
  const screen = await upload(client, sidecar('display', 500.25, '2026-03-04T10:00:00Z', { recordingId: 'R1' }));
  assert.equal((await client.capture(screen)).otherLayerId, undefined);
  // Closer in time, but of another recording; of no recording; of another machine.
  const stranger = await upload(client, sidecar('camera', 500.25, '2026-03-04T10:00:00Z', { recordingId: 'R2' }));
  assert.equal((await client.capture(screen)).otherLayerId, undefined);
  assert.equal((await client.capture(stranger)).otherLayerId, undefined);
  const camera = await upload(client, sidecar('camera', 530, '2026-03-04T11:00:00Z', { recordingId: 'R1' }));
  assert.equal((await client.capture(screen)).otherLayerId, camera);
  assert.equal((await client.capture(camera)).otherLayerId, screen);

  const plain = await upload(client, sidecar('window', 900, '2026-03-04T12:00:00Z'));
  await upload(client, sidecar('camera', 77_000, '2026-03-04T12:00:01Z'));
  await upload(client, sidecar('camera', 901, '2026-03-04T12:05:00Z'));
  const beside = await upload(client, sidecar('camera', 901.5, '2026-03-04T12:00:02Z'));
  assert.equal((await client.capture(plain)).otherLayerId, beside);
  assert.equal((await client.capture(beside)).otherLayerId, plain);
  await upload(client, sidecar('camera', 925, '2026-03-04T12:00:25Z', { recordingId: 'R9' }));
  assert.equal((await client.capture(plain)).otherLayerId, beside);
  // Another account has nothing to do with it.
  const other = await service.client('somebody else');
  await service.call('POST', '/test/projects', { name: 'Theirs', account: 'somebody else' });
  const theirs = await upload(other, sidecar('camera', 500, '2026-03-04T10:00:00Z', { recordingId: 'R1' }));
  assert.equal((await other.capture(theirs)).otherLayerId, undefined);

  // The page has both, the camera at its moment; when the camera is deleted the screen is left.
  const headers = { Accept: 'text/html', Cookie: await service.signIn() };
  const page = await service.call('GET', `/captures/${screen}`, undefined, headers);
  assert.match(page.body, new RegExp(`/captures/${camera}/main" muted[^>]*data-offset="29.75"`));
  const alone = await service.call('GET', `/captures/${camera}`, undefined, headers);
  assert.match(alone.body, /Watch with the screen/);
});

/** A movie element as far as the sync sees it: time passes when the test says. */
class FakeVideo extends EventTarget {
  currentTime = 0;
  duration = 60;
  playbackRate = 1;
  paused = true;
  ended = false;
  seeking = false;
  readyState = 4;
  async play() {
    this.paused = false;
  }
  pause() {
    this.paused = true;
  }
  /** @param {number} seconds */
  pass(seconds) {
    if (!this.paused) this.currentTime += seconds * this.playbackRate;
  }
}

/** @param {number} offset */
function pair(offset) {
  const [main, layer] = [new FakeVideo(), new FakeVideo()];
  const sync = new LayerSync(/** @type {any} */ (main), /** @type {any} */ (layer), offset);
  sync.start();
  const run = (/** @type {number} */ seconds, slip = 0) => {
    for (let passed = 0; passed < seconds; passed += 1 / 60) {
      main.pass(1 / 60);
      layer.pass((1 / 60) * (1 - slip));
      layer.dispatchEvent(new Event('seeked'));
      sync.follow();
    }
  };
  return { main, layer, sync, run };
}

test('the layer starts at its moment and stays in step through seeks, pauses, rates and a slow decoder', () => {
  const { main, layer, sync, run } = pair(2);
  main.paused = false;
  run(1.9);
  assert.equal(layer.paused, true);
  assert.equal(sync.target, undefined);
  run(1);
  assert.equal(layer.paused, false);
  assert.ok(Math.abs(sync.drift) < 0.02, `${sync.drift}`);

  main.currentTime = 30;
  run(0.5);
  assert.ok(Math.abs(layer.currentTime - (main.currentTime - 2)) < 0.02);
  main.playbackRate = 2;
  run(3, 0.03);
  assert.ok(Math.abs(sync.drift) < 0.04, `${sync.drift}`);

  main.pause();
  main.currentTime = 12.5;
  run(0.2);
  assert.equal(layer.paused, true);
  assert.equal(layer.currentTime, 10.5);
  // Past its end it rests.
  main.currentTime = 63;
  main.paused = false;
  run(0.2);
  assert.equal(layer.paused, true);
});
