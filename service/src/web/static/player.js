// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { showCamera } from './cameraLayer.js';
import { EventTrack } from './eventTrack.js';
import { Overlay } from './overlay.js';

const LISTED_MOMENTS = 500;

const stage = document.querySelector('.stage[data-sidecar]');
const video = stage?.querySelector('.screen > video');
const camera = stage?.querySelector('.camera video');
if (video && camera) showCamera(video, camera);
if (video) showSidecar().catch((error) => console.warn('no sidecar shown:', error.message));

async function showSidecar() {
  const answer = await fetch(stage.dataset.sidecar);
  if (!answer.ok) return;
  const track = new EventTrack(await answer.json());
  const overlay = new Overlay(stage.querySelector('canvas'), track);
  const draw = () => overlay.draw(video.currentTime * 1000);
  // The controls' own time line moves in steps; following each frame keeps rings where the clicks are.
  const follow = () => {
    draw();
    if (!video.paused && !video.ended) requestAnimationFrame(follow);
  };
  video.addEventListener('play', follow);
  video.addEventListener('seeked', draw);
  new ResizeObserver(draw).observe(video);
  draw();

  if (track.moments.length === 0) return;
  listMoments(track);
  if (Number.isFinite(video.duration)) markTrack(track);
  else video.addEventListener('loadedmetadata', () => markTrack(track), { once: true });
}

/** @param {EventTrack} track */
function listMoments(track) {
  const section = document.getElementById('moments');
  const list = section.querySelector('ol');
  for (const { t, kind } of track.moments.slice(0, LISTED_MOMENTS)) {
    const item = document.createElement('li');
    const button = document.createElement('button');
    button.className = `moment ${kind}`;
    const time = document.createElement('span');
    time.textContent = clock(t);
    button.append(time, kind === 'down' ? 'Click' : 'Scroll');
    button.addEventListener('click', () => seek(t));
    item.append(button);
    list.append(item);
  }
  section.hidden = false;
}

/** @param {EventTrack} track */
function markTrack(track) {
  const bar = stage.querySelector('.track');
  for (const { t, kind } of track.moments) {
    const tick = document.createElement('span');
    tick.className = kind;
    tick.style.left = `${Math.min(100, (t / (video.duration * 1000)) * 100)}%`;
    bar.append(tick);
  }
  bar.hidden = false;
  bar.addEventListener('click', (event) => {
    const { left, width } = bar.getBoundingClientRect();
    seek(((event.clientX - left) / width) * video.duration * 1000);
  });
}

/** @param {number} t */
function seek(t) {
  video.currentTime = Math.max(0, t / 1000);
}

/** @param {number} t */
function clock(t) {
  const seconds = Math.floor(t / 1000);
  return `${Math.floor(seconds / 60)}:${String(seconds % 60).padStart(2, '0')}.${Math.floor((t % 1000) / 100)}`;
}
