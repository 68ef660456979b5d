// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { createReadStream } from 'node:fs';

import { displayName } from '../api/fields.js';
import { JsonScanner } from './jsonScanner.js';

const SOURCES = ['display', 'region', 'window', 'camera'];
const MAX_TEXT = 200;
const MAX_PIXELS = 100_000;
const MAX_SCALE = 100;
const MAX_ANCHOR = 1e10;

/**
 * What the pages show of a recorder's own words about a capture. Any part may be missing; what is there has
 * this type and a size that fits a page.
 *
 * @typedef {object} SidecarFacts
 * @property {'display'|'region'|'window'|'camera'} [source]
 * @property {number} [width] of the picture, in pixels
 * @property {number} [height]
 * @property {number} [scale] of the display, pixels per point
 * @property {string} [windowTitle]
 * @property {string} [application]
 * @property {boolean} [cursorInVideo]
 * @property {number} [anchor] seconds of the recorder's monotonic clock at which the movie begins
 * @property {number} [capturedAt] the same on the wall clock, in milliseconds and whole seconds
 * @property {string} [recordingId] shared by the movies of one recording
 */

/** @param {string} file @returns {Promise<SidecarFacts>} without any when there is no sidecar that can be read */
export async function readSidecarFacts(file) {
  const scanner = new JsonScanner([
    'source', 'pixelSize.width', 'pixelSize.height', 'display.scaleFactor', 'window.title', 'window.appName',
    'recording.cursorInVideo', 'recording.anchorHostTime', 'recording.recordingId', 'capturedAt',
  ]);
  try {
    // Pieces small enough to leave room for requests between them.
    for await (const piece of createReadStream(file, { highWaterMark: 64 * 1024 })) scanner.push(piece);
  } catch (error) {
    if (error instanceof SyntaxError || /** @type {any} */ (error).code === 'ENOENT') return {};
    throw error;
  }
  return scanner.isComplete() ? typed(scanner.found) : {};
}

/** @param {Map<string, string|number|boolean>} found @returns {SidecarFacts} */
function typed(found) {
  const text = (/** @type {string} */ name) => {
    const value = found.get(name);
    return typeof value === 'string' ? Array.from(displayName(value)).slice(0, MAX_TEXT).join('') : undefined;
  };
  const number = (/** @type {string} */ name, /** @type {number} */ max) => {
    const value = found.get(name);
    return typeof value === 'number' && value > 0 && value <= max ? value : undefined;
  };
  const cursorInVideo = found.get('recording.cursorInVideo');
  return {
    source: /** @type {SidecarFacts['source']} */ (SOURCES.find((source) => source === found.get('source'))),
    width: number('pixelSize.width', MAX_PIXELS),
    height: number('pixelSize.height', MAX_PIXELS),
    scale: number('display.scaleFactor', MAX_SCALE),
    windowTitle: text('window.title'),
    application: text('window.appName'),
    anchor: number('recording.anchorHostTime', MAX_ANCHOR),
    capturedAt: moment(found.get('capturedAt')),
    recordingId: text('recording.recordingId') || undefined,
    cursorInVideo: typeof cursorInVideo === 'boolean' ? cursorInVideo : undefined,
  };
}

/** @param {unknown} value @returns {number|undefined} */
function moment(value) {
  const time = typeof value === 'string' ? Date.parse(value) : NaN;
  return Number.isFinite(time) ? time : undefined;
}
