// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { randomBytes } from 'node:crypto';

import { Server } from '@tus/server';

import { acceptBody } from '../http/bodies.js';
import { DurableFileStore } from './durableFileStore.js';
import { TusAccess } from './tusAccess.js';

export const TUS_PATH = '/storage/tus';

/**
 * Resumable uploads: the reference tus server behind our own access check.
 *
 * @param {import('../http/router.js').Router} router @param {import('../service.js').Service} service
 */
export function addTusRoutes(router, { library, grants, origin }) {
  const access = new TusAccess(library, grants);
  /** Ids of uploads about to be made; the tus server asks for them by its own request object. */
  const newIds = new WeakMap();
  const server = new Server({
    path: TUS_PATH,
    datastore: new DurableFileStore({ directory: library.dir.uploads }),
    allowedOrigins: [],
    disableTerminationForFinishedUploads: true,
    namingFunction: (request) => newIds.get(/** @type {any} */ (request).runtime.node.req),
    generateUrl: (_request, { id }) => `${origin()}${TUS_PATH}/${id}`,
  });

  router.add('OPTIONS', TUS_PATH, ({ req, res }) => server.handle(req, res));
  router.add('POST', TUS_PATH, ({ req, res }) => {
    const asset = access.forCreation(req);
    newIds.set(req, `${asset.id}.${randomBytes(16).toString('hex')}`);
    acceptBody(req, res);
    return server.handle(req, res);
  });
  for (const method of ['HEAD', 'PATCH', 'DELETE']) {
    router.add(method, `${TUS_PATH}/:uploadId`, ({ req, res, params }) => {
      access.forUpload(req, params.uploadId);
      acceptBody(req, res);
      return server.handle(req, res);
    });
  }
}
