// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { Server } from '@tus/server';

import { acceptBody } from '../http/bodies.js';
import { DurableFileStore } from './durableFileStore.js';
import { TusAccess } from './tusAccess.js';
import { newUploadId } from './uploadIds.js';

export const TUS_PATH = '/storage/tus';

/**
 * Resumable uploads: the reference tus server behind our own access check.
 *
 * @param {import('../http/router.js').Router} router @param {import('../service.js').Service} service
 */
export function addTusRoutes(router, { library, grants, origin }) {
  const access = new TusAccess(library, grants);
  /**
   * The upload that each request may touch. The tus server gets its id from here alone: read from the
   * address a second time, it could be another one.
   */
  const uploadIds = new WeakMap();
  const allowedUpload = (/** @type {any} */ request) => uploadIds.get(request.runtime.node.req);
  const server = new Server({
    path: TUS_PATH,
    datastore: new DurableFileStore({ directory: library.dir.uploads }),
    allowedOrigins: [],
    disableTerminationForFinishedUploads: true,
    namingFunction: allowedUpload,
    getFileIdFromRequest: allowedUpload,
    generateUrl: (_request, { id }) => `${origin()}${TUS_PATH}/${id}`,
  });

  router.add('OPTIONS', TUS_PATH, ({ req, res }) => server.handle(req, res));
  router.add('POST', TUS_PATH, ({ req, res }) => {
    const asset = access.forCreation(req);
    uploadIds.set(req, newUploadId(asset.id));
    acceptBody(req, res);
    return server.handle(req, res);
  });
  for (const method of ['HEAD', 'PATCH', 'DELETE']) {
    router.add(method, `${TUS_PATH}/:uploadId`, ({ req, res, params }) => {
      access.forUpload(req, params.uploadId);
      uploadIds.set(req, params.uploadId);
      acceptBody(req, res);
      return server.handle(req, res);
    });
  }
}
