// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { sendJson } from '../http/answers.js';
import { sendFile } from '../http/sendFile.js';
import { extensionFor } from '../storage/objectNames.js';
import { captureTitle } from './format.js';
import { captureJson } from './libraryJson.js';
import { requireViewer, viewedAsset } from './owner.js';

const MAX_LISTED = 1000;
const OWN_PAGES_ONLY = { 'Cross-Origin-Resource-Policy': 'same-origin' };

/**
 * Captures as files and as JSON.
 *
 * @param {import('../http/router.js').Router} router @param {import('../service.js').Service} service
 */
export function addFileRoutes(router, service) {
  const { library } = service;

  router.add('GET', '/library/captures', async (exchange) => {
    const assets = library.assets.list(requireViewer(service, exchange), { limit: MAX_LISTED });
    sendJson(exchange.res, 200, { captures: await Promise.all(assets.map((asset) => captureJson(service, asset))) });
  });

  router.add('GET', '/library/captures/:assetId', async (exchange) => {
    sendJson(exchange.res, 200, await captureJson(service, viewedAsset(service, exchange)));
  });

  router.add('GET', '/captures/:assetId/main', (exchange) => {
    const asset = viewedAsset(service, exchange);
    const download = exchange.url.searchParams.has('download');
    return sendFile(exchange, library.dir.object(asset.id, 'main'), {
      // Browsers decode QuickTime movies but decline their media type.
      type: !download && asset.mime === 'video/quicktime' ? 'video/mp4' : asset.mime,
      etag: asset.sha256 ?? undefined,
      headers: { ...OWN_PAGES_ONLY, ...(download ? { 'Content-Disposition': attachment(asset) } : {}) },
    });
  });

  for (const [slot, type] of /** @type {const} */ ([['thumb', 'image/jpeg'], ['meta', 'application/json']])) {
    router.add('GET', `/captures/:assetId/${slot}`, (exchange) => {
      const asset = viewedAsset(service, exchange);
      return sendFile(exchange, library.dir.object(asset.id, slot), { type, headers: OWN_PAGES_ONLY });
    });
  }
}

/** @param {import('../store/assets.js').AssetRow} asset */
function attachment(asset) {
  const name = `${captureTitle(asset).replace(/[/\\]/g, '-')}.${extensionFor(asset.mime)}`;
  const plain = name.replace(/[^\x20-\x7e]|["%]/g, '_');
  const encoded = encodeURIComponent(name).replace(/['()*]/g, (c) => `%${c.charCodeAt(0).toString(16)}`);
  return `attachment; filename="${plain}"; filename*=UTF-8''${encoded}`;
}
