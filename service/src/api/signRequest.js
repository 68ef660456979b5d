// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { HttpError } from '../http/httpError.js';
import { isAcceptedMime } from '../storage/objectNames.js';
import { countField, displayName, invalid, optionalCountField, optionalTextField, textField } from './fields.js';

const MAX_THUMB_BYTES = 4 * 1024 * 1024;
const MAX_IMAGE_BYTES = 1024 * 1024 * 1024;
/** A recorder stops at the limit, but its last frame may land a little after it. */
const DURATION_SLACK_MS = 5_000;

const CAPTURE_ID = /^[0-9a-f]{8}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{12}$/i;

/**
 * Reads the body of a registration.
 *
 * @param {Record<string, unknown>} body
 * @returns {import('../store/assets.js').AssetFacts}
 */
export function parseSignRequest(body) {
  const projectId = textField(body, 'projectId', { max: 100 });
  const captureId = textField(body, 'captureId', { max: 36 });
  if (!CAPTURE_ID.test(captureId)) throw invalid('captureId', 'must be a UUID');
  const kind = textField(body, 'kind', { max: 10 });
  if (kind !== 'video' && kind !== 'image') throw invalid('kind', 'must be "video" or "image"');
  const mime = textField(body, 'mime', { max: 100 });
  if (!isAcceptedMime(kind, mime)) throw invalid('mime', `is not an accepted type of ${kind}`);
  if (typeof body.meta !== 'boolean') throw invalid('meta', 'must be true or false');
  const name = optionalTextField(body, 'name', { max: 1000 });
  return {
    projectId,
    captureId: captureId.toLowerCase(),
    kind,
    mime,
    bytes: countField(body, 'bytes'),
    durationMs: optionalCountField(body, 'durationMs'),
    name: name === null ? null : displayName(name) || null,
    thumbBytes: parseThumb(body.thumb),
    wantsMeta: body.meta,
  };
}

/** @param {unknown} thumb @returns {number|null} */
function parseThumb(thumb) {
  if (thumb === undefined || thumb === null) return null;
  if (typeof thumb !== 'object') throw invalid('thumb', 'must be an object');
  const fields = /** @type {Record<string, unknown>} */ (thumb);
  if (fields.mime !== 'image/jpeg') throw invalid('thumb.mime', 'must be "image/jpeg"');
  return countField(fields, 'bytes', { max: MAX_THUMB_BYTES });
}

/**
 * Holds a registration against the plan.
 *
 * @param {import('../store/assets.js').AssetFacts} facts @param {import('../config.js').Config} config
 */
export function requireWithinPlan(facts, config) {
  const cap = facts.kind === 'video' ? config.maxVideoUploadBytes : MAX_IMAGE_BYTES;
  if (cap !== null && facts.bytes > cap) throw new HttpError(413, "This capture is over your plan's size limit");
  if (facts.kind === 'video' && (facts.durationMs ?? 0) > config.maxVideoDurationMs + DURATION_SLACK_MS) {
    throw new HttpError(413, "This recording is longer than your plan's limit");
  }
}
