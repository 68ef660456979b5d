// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

/** @typedef {'main'|'thumb'|'meta'} Slot */

export const BUCKET = 'captures';

/** What a capture may be, and how its file is named. Nothing that a browser would run. */
const EXTENSIONS = new Map([
  ['video/quicktime', 'mov'],
  ['video/mp4', 'mp4'],
  ['video/webm', 'webm'],
  ['image/png', 'png'],
  ['image/jpeg', 'jpg'],
  ['image/webp', 'webp'],
]);

/** @param {string} kind @param {string} mime */
export function isAcceptedMime(kind, mime) {
  return EXTENSIONS.has(mime) && mime.startsWith(`${kind}/`);
}

/** @param {string} mime */
export function extensionFor(mime) {
  return EXTENSIONS.get(mime) ?? 'bin';
}

/**
 * The object's name in storage. It stays the same however often a capture is signed, so that an
 * interrupted upload can go on.
 *
 * @param {import('../store/assets.js').AssetRow} asset @param {Slot} slot
 */
export function objectName(asset, slot) {
  const file = { main: `main.${extensionFor(asset.mime)}`, thumb: 'thumb.jpg', meta: 'meta.json' }[slot];
  return `${asset.account_id}/${asset.id}/${file}`;
}

/**
 * @param {string} name
 * @returns {{accountId: string, assetId: string, slot: Slot}|undefined}
 */
export function parseObjectName(name) {
  const match = /^(acc_[a-z2-7]+)\/(cap_[a-z2-7]+)\/(main|thumb|meta)\.\w+$/.exec(name);
  return match ? { accountId: match[1], assetId: match[2], slot: /** @type {Slot} */ (match[3]) } : undefined;
}
