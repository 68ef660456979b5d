// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { sendEmpty } from '../http/answers.js';
import { acceptBody, bodyStream } from '../http/bodies.js';
import { HttpError } from '../http/httpError.js';
import { parseObjectName } from './objectNames.js';

/** A sidecar's size is not announced. An hour of pointer movement is about ten megabytes. */
const MAX_META_BYTES = 64 * 1024 * 1024;

/**
 * One-shot uploads to pre-signed URLs.
 *
 * @param {import('../http/router.js').Router} router @param {import('../service.js').Service} service
 */
export function addPutRoutes(router, { library, grants, objects }) {
  router.add('PUT', '/storage/put/:accountId/:assetId/:file', async ({ req, res, url, params }) => {
    const target = parseObjectName(`${params.accountId}/${params.assetId}/${params.file}`);
    const asset = target && library.assets.findOwned(target.accountId, target.assetId);
    if (!target || !asset || !grants.allowsPut(asset, target.slot, url.searchParams.get('signature') ?? undefined)) {
      throw new HttpError(403, 'The upload URL is not valid or has expired');
    }
    if (asset.status === 'confirmed') throw new HttpError(409, 'The capture is already confirmed');
    const bytes = announcedLength(req);
    const expected = { main: asset.bytes, thumb: asset.thumb_bytes, meta: null }[target.slot];
    if (expected === null ? bytes > MAX_META_BYTES : bytes > expected) {
      throw new HttpError(413, 'The body is larger than announced');
    }
    if (expected !== null && bytes < expected) throw new HttpError(400, 'The body is shorter than announced');
    acceptBody(req, res);
    const stillWanted = () => library.assets.find(asset.id)?.status === 'pending';
    await objects.put(asset, target.slot, bodyStream(req), { bytes, stillWanted });
    sendEmpty(res, 200);
  });
}

/** @param {import('node:http').IncomingMessage} req */
function announcedLength(req) {
  const header = req.headers['content-length'];
  if (header === undefined) throw new HttpError(411, 'Content-Length is required');
  return Number(header);
}
