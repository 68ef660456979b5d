// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

// What a browser shows of a movie, for the application's tests:
//   node showFrame.js MOVIE SECONDS PICTURE.png

import { readFileSync, writeFileSync } from 'node:fs';

import { openBrowser } from './browser.js';

const [movie, seconds, picture] = process.argv.slice(2);
const browser = await openBrowser();
try {
  const frame = await browser.page.evaluate(
    async ({ base64, time }) => {
      const bytes = Uint8Array.from(atob(base64), (character) => character.charCodeAt(0));
      const video = document.createElement('video');
      const happened = (/** @type {string} */ event) =>
        new Promise((resolve, reject) => {
          video.addEventListener(event, resolve, { once: true });
          video.addEventListener('error', () => reject(new Error(video.error?.message)), { once: true });
        });
      video.muted = true;
      video.src = URL.createObjectURL(new Blob([bytes]));
      await happened('loadeddata');
      video.currentTime = time;
      await happened('seeked');
      const canvas = new OffscreenCanvas(video.videoWidth, video.videoHeight);
      const context = canvas.getContext('2d');
      // On a busy machine the picture comes after the event.
      for (let tries = 0; tries < 200 && !context?.getImageData(0, 0, 1, 1).data[3]; ++tries) {
        await new Promise((resolve) => setTimeout(resolve, tries ? 50 : 0));
        context?.drawImage(video, 0, 0);
      }
      const png = new Uint8Array(await (await canvas.convertToBlob({ type: 'image/png' })).arrayBuffer());
      return btoa(Array.from(png, (byte) => String.fromCharCode(byte)).join(''));
    },
    { base64: readFileSync(movie).toString('base64'), time: Number(seconds) },
  );
  writeFileSync(picture, Buffer.from(frame, 'base64'));
} finally {
  await browser.close();
}
