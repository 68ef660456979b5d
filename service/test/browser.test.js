// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { readFileSync } from 'node:fs';
import path from 'node:path';
import { after, before, test } from 'node:test';

import { openBrowser } from './support/browser.js';
import { eventually } from './support/eventually.js';
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

test('a recording plays with its camera in a corner, in step', async () => {
  const client = await service.client();
  const names = ['screen', 'camera'];
  for (const [index, source] of ['region', 'camera'].entries()) {
    const movie = makeMovie(path.join(service.data, `${names[index]}.mov`), 6);
    const sidecar = {
      version: 1, type: 'recording', source, capturedAt: '2026-03-04T10:00:00Z',
      display: { size: { width: 320, height: 240 }, scaleFactor: 1 }, pixelSize: { width: 320, height: 240 },
      recording: { fps: 30, durationMs: 6000, events: [], anchorHostTime: 100 + index, recordingId: 'B' },
    };
    const { body } = await client.sign({ bytes: movie.length, name: names[index], durationMs: 6000, meta: true });
    await fetch(body.main.upload.uploadUrl, { method: 'PUT', body: movie });
    await fetch(body.meta.uploadUrl, { method: 'PUT', body: JSON.stringify(sidecar) });
    assert.equal((await client.confirm(body.assetId)).status, 200);
    if (index === 0) names.push(body.main.publicUrl);
  }
  await eventually(async () => {
    await page.goto(names[2]);
    return (await page.locator('.camera').count()) > 0;
  });
  /** How far the camera is from where it should be, and whether it is shown. */
  const look = () =>
    page.evaluate(() => {
      const [screen, camera] = /** @type {NodeListOf<HTMLVideoElement>} */ (document.querySelectorAll('.screen video'));
      const box = /** @type {HTMLElement} */ (camera.closest('.camera'));
      return { drift: camera.currentTime - (screen.currentTime - 1), shown: !box.hidden, at: screen.currentTime };
    });
  assert.equal((await look()).shown, false);
  const seekAndPlay = (/** @type {number} */ to, /** @type {number} */ rate, /** @type {number} */ until) =>
    page.evaluate(async ([to, rate, until]) => {
      const video = /** @type {HTMLVideoElement} */ (document.querySelector('.screen > video'));
      video.muted = true;
      video.playbackRate = rate;
      video.currentTime = to;
      await video.play();
      await new Promise((resolve) => {
        const watch = () => (video.currentTime >= until ? resolve(undefined) : requestAnimationFrame(watch));
        watch();
      });
    }, [to, rate, until]);
  for (const [to, rate, until] of [[0, 1, 3], [1.5, 2, 5]]) {
    await seekAndPlay(to, rate, until);
    // On a machine that has other things to do it may need some moments.
    await page.waitForFunction(() => {
      const [screen, camera] = /** @type {NodeListOf<HTMLVideoElement>} */ (document.querySelectorAll('.screen video'));
      return screen.ended || Math.abs(camera.currentTime - (screen.currentTime - 1)) < 0.035;
    }, undefined, { polling: 'raf' });
    assert.equal((await look()).shown, true);
  }
  await page.evaluate(() => {
    const video = /** @type {HTMLVideoElement} */ (document.querySelector('.screen > video'));
    video.pause();
    video.currentTime = 3.2;
  });
  await eventually(async () => Math.abs((await look()).drift) < 0.002);
  const corner = () => page.locator('.camera').getAttribute('data-corner');
  assert.equal(await corner(), 'bottom-right');
  await page.locator('.camera').click();
  assert.equal(await corner(), 'bottom-left');
  await page.getByLabel('Show the camera').uncheck();
  assert.equal((await look()).shown, false);
  await page.getByLabel('Show the camera').check();
  assert.deepEqual(complaints, []);
});

/** So many seconds of moving H.264 in a QuickTime container. @param {string} file @param {number} [seconds] */
function makeMovie(file, seconds = 2) {
  execFileSync('ffmpeg', [
    '-loglevel', 'error', '-f', 'lavfi', '-i', `testsrc=size=320x240:rate=30:duration=${seconds}`,
    '-c:v', 'libx264', '-preset', 'ultrafast', '-pix_fmt', 'yuv420p', file,
  ]);
  return readFileSync(file);
}
