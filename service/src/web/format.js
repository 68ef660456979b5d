// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { html } from './html.js';

const UNITS = ['bytes', 'KB', 'MB', 'GB', 'TB'];

/** @param {number} bytes */
export function fileSize(bytes) {
  let value = bytes;
  let unit = 0;
  while (value >= 1000 && unit < UNITS.length - 1) {
    value /= 1000;
    unit += 1;
  }
  const digits = unit === 0 || value >= 100 ? 0 : 1;
  return `${value.toFixed(digits)} ${unit === 0 && bytes === 1 ? 'byte' : UNITS[unit]}`;
}

/** @param {number} ms @returns {string} 0:07, 12:31, 1:02:03 */
export function duration(ms) {
  const total = Math.round(ms / 1000);
  const two = (/** @type {number} */ number) => String(number).padStart(2, '0');
  const minutes = Math.floor(total / 60);
  if (minutes < 60) return `${minutes}:${two(total % 60)}`;
  return `${Math.floor(minutes / 60)}:${two(minutes % 60)}:${two(total % 60)}`;
}

/** A moment. The page's script puts it into the reader's own time zone. @param {number} ms */
export function moment(ms) {
  const date = new Date(ms);
  const text = date.toLocaleString('en-GB', { dateStyle: 'medium', timeStyle: 'short', timeZone: 'UTC' });
  return html`<time datetime="${date.toISOString()}">${text} UTC</time>`;
}

/** What people see of a capture that was never given a name. @param {import('../store/assets.js').AssetRow} asset */
export function captureTitle(asset) {
  return asset.name ?? (asset.kind === 'video' ? 'Screen recording' : 'Screenshot');
}
