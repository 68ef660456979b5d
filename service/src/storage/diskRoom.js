// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { statfs } from 'node:fs/promises';

import { HttpError } from '../http/httpError.js';

/** Kept free beyond what is announced: database, thumbnails, other uploads under way. */
const RESERVE_BYTES = 64 * 1024 * 1024;

/**
 * Refuses a capture that cannot fit before its upload starts, rather than after hours.
 *
 * @param {string} folder @param {number} bytes
 */
export async function requireRoomFor(folder, bytes) {
  const { bavail, bsize } = await statfs(folder);
  if (bavail * bsize < bytes + RESERVE_BYTES) throw new HttpError(507, 'The library has no room left on its disk');
}
