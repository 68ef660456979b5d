// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { LayerSync } from './layerSync.js';

const CORNERS = ['bottom-right', 'bottom-left', 'top-left', 'top-right'];
const REMEMBERED = 'camera-corner';
const HIDDEN = 'camera-hidden';

/**
 * Shows the camera's movie in a corner of the screen's, in step with it. A click on it moves it to the next
 * corner; a switch below hides it. Both are remembered.
 *
 * @param {HTMLVideoElement} screen @param {HTMLVideoElement} camera
 */
export function showCamera(screen, camera) {
  const sync = new LayerSync(screen, camera, Number(camera.dataset.offset));
  const box = /** @type {HTMLElement} */ (camera.closest('.camera'));
  const shownSwitch = /** @type {HTMLInputElement|null} */ (document.querySelector('#camera-shown'));

  const place = (/** @type {string} */ corner) => {
    box.dataset.corner = corner;
    localStorage.setItem(REMEMBERED, corner);
  };
  const remembered = localStorage.getItem(REMEMBERED) ?? '';
  place(CORNERS.includes(remembered) ? remembered : CORNERS[0]);
  box.addEventListener('click', () => {
    const next = CORNERS.indexOf(box.dataset.corner ?? '') + 1;
    place(CORNERS[next % CORNERS.length]);
  });

  const refresh = () => {
    const isWanted = shownSwitch?.checked ?? true;
    // Before the camera's first picture and after its last one there is none to show.
    box.hidden = !isWanted || sync.target === undefined || camera.readyState < 2;
  };
  if (shownSwitch) {
    shownSwitch.checked = localStorage.getItem(HIDDEN) !== 'yes';
    shownSwitch.addEventListener('change', () => {
      localStorage.setItem(HIDDEN, shownSwitch.checked ? 'no' : 'yes');
      refresh();
    });
  }
  sync.start();
  let isFollowing = false;
  const follow = () => {
    sync.follow();
    refresh();
    isFollowing = !screen.paused && !screen.ended;
    if (isFollowing) requestAnimationFrame(follow);
  };
  screen.addEventListener('play', () => isFollowing || follow());
  for (const name of ['seeked', 'timeupdate', 'pause', 'ended']) screen.addEventListener(name, refresh);
  for (const name of ['loadeddata', 'seeked', 'error']) camera.addEventListener(name, refresh);
  refresh();
}
