// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { readFileSync } from 'node:fs';
import path from 'node:path';
import { after, before, test } from 'node:test';

import { openBrowser } from './support/browser.js';
import { Client, ServiceProcess } from './support/serviceProcess.js';

/** @type {ServiceProcess} */
let service;
/** @type {Awaited<ReturnType<typeof openBrowser>>} */
let browser;
/** @type {import('playwright-core').Page} */
let page;
/** @type {string[]} */
const complaints = [];

before(async () => {
  service = await ServiceProcess.start(['--test-mode']);
  browser = await openBrowser();
  page = browser.page;
  await page.goto(service.signInUrl);
  page.on('pageerror', (error) => complaints.push(error.message));
  page.on('console', (message) => {
    if (message.type() === 'error') complaints.push(message.text());
  });
});
after(async () => {
  await browser?.close();
  await service?.dispose();
});

/** @param {string} name */
async function requestPairing(name) {
  return (await service.call('POST', '/v1/keys/request', { name })).body;
}

/** @param {string} deviceCode */
const poll = async (deviceCode) => (await service.call('POST', '/v1/keys/poll', { deviceCode })).body;

test('the owner approves a device by a click, and it is listed', async () => {
  const { approvalUrl, deviceCode } = await requestPairing('Studio laptop');
  await page.goto(approvalUrl);
  assert.match((await page.textContent('.device')) ?? '', /Studio laptop/);
  await page.getByRole('button', { name: 'Approve' }).click();
  await page.getByRole('heading', { name: 'Connected' }).waitFor();
  const { apiKey } = await poll(deviceCode);
  assert.equal((await new Client(service, apiKey).call('GET', '/v1/capture/limits')).status, 200);
  await page.getByRole('link', { name: 'Connected devices' }).click();
  await page.getByText('Studio laptop').waitFor();
});

test('the owner denies a device', async () => {
  const { approvalUrl, deviceCode } = await requestPairing('Unknown box');
  await page.goto(approvalUrl);
  await page.getByRole('button', { name: 'Deny' }).click();
  await page.getByRole('heading', { name: 'Not connected' }).waitFor();
  assert.deepEqual(await poll(deviceCode), { status: 'denied' });
});

test('the library plays a recording and shows where it was clicked', async () => {
  const client = await service.client();
  const movie = makeMovie(path.join(service.data, 'made.mov'));
  const sidecar = {
    version: 1,
    type: 'recording',
    source: 'display',
    display: { size: { width: 160, height: 120 }, scaleFactor: 2 },
    pixelSize: { width: 320, height: 240 },
    recording: {
      fps: 30,
      durationMs: 2000,
      cursorInVideo: true,
      events: [{ t: 1000, kind: 'down', x: 40, y: 30 }, { t: 1500, kind: 'scroll', x: 80, y: 60 }],
    },
  };
  const { body } = await client.sign({ bytes: movie.length, name: 'A walk & talk', durationMs: 2000, meta: true });
  await fetch(body.main.upload.uploadUrl, { method: 'PUT', body: movie });
  await fetch(body.meta.uploadUrl, { method: 'PUT', body: JSON.stringify(sidecar) });
  assert.equal((await client.confirm(body.assetId)).status, 200);

  await page.goto(service.url);
  await page.getByRole('link', { name: /A walk & talk/ }).click();
  assert.equal(page.url(), body.main.publicUrl);
  await page.locator('.moment').nth(1).waitFor();
  assert.deepEqual(await page.locator('.moment').allTextContents(), ['0:01.0Click', '0:01.5Scroll']);

  const played = await page.evaluate(async () => {
    const video = /** @type {HTMLVideoElement} */ (document.querySelector('video'));
    video.muted = true;
    await video.play();
    await new Promise((resolve) => video.addEventListener('ended', resolve, { once: true }));
    const { totalVideoFrames } = video.getVideoPlaybackQuality();
    return { width: video.videoWidth, duration: video.duration, frames: totalVideoFrames };
  });
  assert.equal(played.width, 320);
  assert.ok(Math.abs(played.duration - 2) < 0.1, `${played.duration} s`);
  assert.ok(played.frames > 10, `${played.frames} frames`);

  // A click at a quarter of the picture leaves its ring at a quarter of the player, just afterwards.
  await page.locator('.moment').first().click();
  const isRinged = () => {
    const canvas = /** @type {HTMLCanvasElement} */ (document.querySelector('.screen canvas'));
    const { width, height } = canvas;
    const [x, y] = [Math.round(width / 4), Math.round(height / 4)];
    const context = /** @type {CanvasRenderingContext2D} */ (canvas.getContext('2d'));
    const painted = (/** @type {number[]} */ [left, top, w, h]) =>
      context.getImageData(left, top, w, h).data.some((value) => value > 0);
    return painted([x - 40, y - 40, 80, 80]) && !painted([Math.round(width / 2), Math.round(height / 2), 100, 100]);
  };
  await page.waitForFunction(isRinged);
  assert.deepEqual(complaints, []);
});

/** Two seconds of moving H.264 in a QuickTime container. @param {string} file */
function makeMovie(file) {
  execFileSync('ffmpeg', [
    '-loglevel', 'error', '-f', 'lavfi', '-i', 'testsrc=size=320x240:rate=30:duration=2',
    '-c:v', 'libx264', '-preset', 'ultrafast', '-pix_fmt', 'yuv420p', file,
  ]);
  return readFileSync(file);
}
