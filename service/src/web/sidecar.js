// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { readFile } from 'node:fs/promises';

/**
 * What a recorder tells about a capture, as far as the pages show it. A client's own words: any part
 * may be missing.
 *
 * @typedef {{source?: string, display?: any, window?: any, pixelSize?: {width: number, height: number},
 *   recording?: {cursorInVideo?: boolean}}} Sidecar
 */

/** @param {string} file @returns {Promise<Sidecar|undefined>} nothing when there is none that can be read */
export async function readSidecar(file) {
  let value;
  try {
    value = JSON.parse(await readFile(file, 'utf8'));
  } catch {
    return undefined;
  }
  if (value === null || typeof value !== 'object') return undefined;
  const { width, height } = value.pixelSize ?? {};
  return {
    source: typeof value.source === 'string' ? value.source : undefined,
    display: value.display ?? undefined,
    window: value.window ?? undefined,
    pixelSize: Number.isFinite(width) && Number.isFinite(height) ? { width, height } : undefined,
    recording: value.recording ?? undefined,
  };
}
