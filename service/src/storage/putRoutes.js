// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { sendEmpty } from '../http/answers.js';
import { acceptBody, bodyStream } from '../http/bodies.js';
import { HttpError } from '../http/httpError.js';
import { parseObjectName } from './objectNames.js';

/** A sidecar's size is not announced. An hour of pointer movement is about ten megabytes. */
const MAX_META_BYTES = 64 * 1024 * 1024;

const NOT_VALID = 'The upload URL is not valid or has expired';
const alreadyConfirmed = () => new HttpError(409, 'The capture is already confirmed');

/**
 * One-shot uploads to pre-signed URLs.
 *
 * @param {import('../http/router.js').Router} router @param {import('../service.js').Service} service
 */
export function addPutRoutes(router, { library, grants, objects, captureLocks }) {
  router.add('PUT', '/storage/put/:accountId/:assetId/:file', async ({ req, res, url, params }) => {
    const target = parseObjectName(`${params.accountId}/${params.assetId}/${params.file}`);
    const asset = target && library.assets.findOwned(target.accountId, target.assetId);
    if (!target || !asset || !grants.allowsPut(asset, target.slot, url.searchParams.get('signature') ?? undefined)) {
      throw new HttpError(403, NOT_VALID);
    }
    if (asset.status === 'confirmed') throw alreadyConfirmed();
    const bytes = announcedLength(req);
    const expected = expectedBytes(asset, target.slot);
    if (expected === null ? bytes > MAX_META_BYTES : bytes > expected) {
      throw new HttpError(413, 'The body is larger than announced');
    }
    if (expected !== null && bytes < expected) throw new HttpError(400, 'The body is shorter than announced');
    acceptBody(req, res);
    const inTurn = (/** @type {() => Promise<void>} */ publish) =>
      captureLocks.run(asset.account_id, asset.capture_id, async () => {
        // A slow request that its client gave up on must not replace what was confirmed meanwhile, nor what
        // was announced anew with another size.
        const current = library.assets.find(asset.id);
        if (current?.status === 'confirmed') throw alreadyConfirmed();
        if (!current || expectedBytes(current, target.slot) !== expected) throw new HttpError(403, NOT_VALID);
        await publish();
      });
    await objects.put(asset, target.slot, bodyStream(req), { bytes, inTurn });
    sendEmpty(res, 200);
  });
}

/** @param {import('../store/assets.js').AssetRow} asset @param {import('./objectNames.js').Slot} slot @returns {number|null} */
function expectedBytes(asset, slot) {
  return { main: asset.bytes, thumb: asset.thumb_bytes, meta: null }[slot];
}

/** @param {import('node:http').IncomingMessage} req */
function announcedLength(req) {
  const header = req.headers['content-length'];
  if (header === undefined) throw new HttpError(411, 'Content-Length is required');
  return Number(header);
}
