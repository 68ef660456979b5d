// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { otherLayer } from '../store/layers.js';

/**
 * A capture as the library tells it to programs.
 *
 * @param {import('../service.js').Service} service @param {import('../store/assets.js').AssetRow} asset
 */
export async function captureJson({ library, objects, origin }, asset) {
  return {
    id: asset.id,
    captureId: asset.capture_id,
    name: asset.name,
    kind: asset.kind,
    mime: asset.mime,
    projectId: asset.project_id,
    projectName: library.projects.find(asset.account_id, asset.project_id)?.name,
    status: asset.status,
    bytes: asset.bytes,
    durationMs: asset.duration_ms,
    sha256: asset.sha256,
    hasThumb: await objects.has(asset.id, 'thumb'),
    hasMeta: await objects.has(asset.id, 'meta'),
    createdAt: new Date(asset.created_at).toISOString(),
    confirmedAt: asset.confirmed_at === null ? null : new Date(asset.confirmed_at).toISOString(),
    otherLayerId: asset.status === 'confirmed' ? otherLayer(library.assets, asset)?.id : undefined,
    url: `${origin()}/captures/${asset.id}`,
  };
}
