// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { acceptBody } from '../http/bodies.js';
import { HttpError } from '../http/httpError.js';
import { TusAccess } from './tusAccess.js';
import { TUS_PATH } from './tusRoutes.js';
import { newUploadId } from './uploadIds.js';

const TUS = { 'Tus-Resumable': '1.0.0' };

/**
 * The tus protocol over nothing, for measuring clients: the shortest path from socket to answer.
 *
 * @param {import('../http/router.js').Router} router
 * @param {import('../service.js').Service} service
 * @param {import('./discardObjects.js').DiscardObjects} objects
 */
export function addDiscardTusRoutes(router, { library, grants, origin }, objects) {
  const access = new TusAccess(library, grants);
  /** @type {Map<string, {assetId: string, offset: number, length: number}>} */
  const uploads = new Map();

  const find = (/** @type {string} */ id) => {
    const upload = uploads.get(id);
    if (!upload) throw new HttpError(404, 'No such upload');
    return upload;
  };

  router.add('POST', TUS_PATH, ({ req, res }) => {
    const asset = access.forCreation(req);
    const id = newUploadId(asset.id);
    uploads.set(id, { assetId: asset.id, offset: 0, length: asset.bytes });
    if (asset.bytes === 0) objects.record(asset.id, 'main', 0);
    res.writeHead(201, { ...TUS, Location: `${origin()}${TUS_PATH}/${id}`, 'Content-Length': 0 });
    res.end();
  });

  router.add('HEAD', `${TUS_PATH}/:uploadId`, ({ req, res, params }) => {
    access.forUpload(req, params.uploadId);
    const upload = find(params.uploadId);
    res.writeHead(200, { ...TUS, 'Upload-Offset': upload.offset, 'Upload-Length': upload.length, 'Cache-Control': 'no-store' });
    res.end();
  });

  router.add('PATCH', `${TUS_PATH}/:uploadId`, ({ req, res, params }) => {
    access.forUpload(req, params.uploadId);
    const upload = find(params.uploadId);
    if (Number(req.headers['upload-offset']) !== upload.offset) throw new HttpError(409, 'Upload-Offset conflict');
    if (upload.offset + Number(req.headers['content-length'] ?? 0) > upload.length) {
      throw new HttpError(413, 'The upload is larger than announced');
    }
    acceptBody(req, res);
    req.on('data', (chunk) => {
      upload.offset += chunk.length;
    });
    req.on('end', () => {
      if (upload.offset === upload.length) objects.record(upload.assetId, 'main', upload.length);
      res.writeHead(204, { ...TUS, 'Upload-Offset': upload.offset });
      res.end();
    });
  });
}
