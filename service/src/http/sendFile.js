// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { createReadStream } from 'node:fs';
import { stat } from 'node:fs/promises';
import { pipeline } from 'node:stream/promises';

import { HttpError } from './httpError.js';

/**
 * Sends a file, or the part of it that a Range header asks for: a player seeks by ranges.
 *
 * @param {import('./router.js').Exchange} exchange @param {string} file
 * @param {{type: string, etag?: string, headers?: Record<string, string>}} options
 */
export async function sendFile({ req, res }, file, { type, etag, headers = {} }) {
  let size;
  try {
    ({ size } = await stat(file));
  } catch {
    throw new HttpError(404, 'Not found');
  }
  const common = {
    'Content-Type': type,
    'Accept-Ranges': 'bytes',
    'Cache-Control': 'private, no-cache',
    'X-Content-Type-Options': 'nosniff',
    ...(etag ? { ETag: `"${etag}"` } : {}),
    ...headers,
  };
  if (etag && req.headers['if-none-match'] === `"${etag}"`) {
    res.writeHead(304, common).end();
    return;
  }
  // A range of another version of the file would splice two files together.
  const rangeHeader = req.headers['if-range'] && req.headers['if-range'] !== `"${etag}"` ? undefined : req.headers.range;
  const range = parseRange(rangeHeader, size);
  if (range === 'unsatisfiable') {
    throw new HttpError(416, 'Range not satisfiable', { headers: { 'Content-Range': `bytes */${size}` } });
  }
  const { start, end } = range ?? { start: 0, end: size - 1 };
  res.writeHead(range ? 206 : 200, {
    ...common,
    'Content-Length': end - start + 1,
    ...(range ? { 'Content-Range': `bytes ${start}-${end}/${size}` } : {}),
  });
  if (req.method === 'HEAD' || size === 0) {
    res.end();
    return;
  }
  try {
    await pipeline(createReadStream(file, { start, end }), res);
  } catch (error) {
    // A player that seeks away hangs up; that is its right.
    if (/** @type {any} */ (error).code !== 'ERR_STREAM_PREMATURE_CLOSE') throw error;
  }
}

/**
 * One byte range, or nothing when the header is absent, malformed or asks for several (then the
 * whole file is a valid answer).
 *
 * @param {string|undefined} header @param {number} size
 * @returns {{start: number, end: number}|'unsatisfiable'|undefined}
 */
export function parseRange(header, size) {
  const match = /^bytes=(\d*)-(\d*)$/.exec(header ?? '');
  if (!match || (match[1] === '' && match[2] === '')) return undefined;
  let start;
  let end;
  if (match[1] === '') {
    const suffix = Number(match[2]);
    start = suffix === 0 ? size : Math.max(0, size - suffix);
    end = size - 1;
  } else {
    start = Number(match[1]);
    end = match[2] === '' ? size - 1 : Math.min(Number(match[2]), size - 1);
    if (match[2] !== '' && Number(match[2]) < start) return undefined;
  }
  return start < size ? { start, end } : 'unsatisfiable';
}
