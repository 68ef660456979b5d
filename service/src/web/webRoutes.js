// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { sendJson } from '../http/answers.js';
import { HttpError } from '../http/httpError.js';
import { sendFile } from '../http/sendFile.js';
import { captureJson } from './libraryJson.js';
import { requireViewer } from './owner.js';

const MAX_LISTED = 1000;

/** @param {import('../http/router.js').Router} router @param {import('../service.js').Service} service */
export function addWebRoutes(router, service) {
  const { library } = service;
  const ownedAsset = (/** @type {import('../http/router.js').Exchange} */ exchange) => {
    const asset = library.assets.findOwned(requireViewer(service, exchange), exchange.params.assetId);
    if (!asset) throw new HttpError(404, 'Capture not found');
    return asset;
  };

  router.add('GET', '/library/captures', async (exchange) => {
    const assets = library.assets.list(requireViewer(service, exchange), { limit: MAX_LISTED });
    sendJson(exchange.res, 200, { captures: await Promise.all(assets.map((asset) => captureJson(service, asset))) });
  });
  router.add('GET', '/library/captures/:assetId', async (exchange) => {
    sendJson(exchange.res, 200, await captureJson(service, ownedAsset(exchange)));
  });
  for (const [slot, type] of [['main', ''], ['thumb', 'image/jpeg'], ['meta', 'application/json']]) {
    router.add('GET', `/captures/:assetId/${slot}`, (exchange) => {
      const asset = ownedAsset(exchange);
      return sendFile(exchange, library.dir.object(asset.id, /** @type {any} */ (slot)), { type: type || asset.mime });
    });
  }
}
