// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { BUCKET, objectName } from '../storage/objectNames.js';
import { TUS_PATH } from '../storage/tusRoutes.js';

/** @typedef {import('../store/assets.js').AssetRow} AssetRow */

/**
 * The answer to a registration or refresh: where each file goes, and the leave to put it there.
 *
 * @param {import('../service.js').Service} service @param {AssetRow} asset
 */
export function signedCapture(service, asset) {
  const { grants, origin } = service;
  const slot = (/** @type {'thumb'|'meta'} */ name) => ({
    uploadUrl: origin() + grants.putPath(asset, name),
    path: objectName(asset, name),
  });
  return {
    assetId: asset.id,
    projectId: asset.project_id,
    main: {
      path: objectName(asset, 'main'),
      publicUrl: `${origin()}/captures/${asset.id}`,
      upload: describeUpload(service, asset),
    },
    ...(asset.thumb_bytes === null ? {} : { thumb: slot('thumb') }),
    ...(asset.wants_meta ? { meta: slot('meta') } : {}),
  };
}

/** @param {import('../service.js').Service} service @param {AssetRow} asset */
function describeUpload({ config, grants, origin }, asset) {
  const onePut = config.transfer === 'auto' ? asset.bytes <= config.putThreshold : config.transfer === 'standard';
  if (onePut) return { kind: 'standard', uploadUrl: origin() + grants.putPath(asset, 'main') };
  return {
    kind: 'tus',
    endpoint: origin() + TUS_PATH,
    signature: grants.signTus(asset),
    apiKey: grants.storageKey,
    bucket: BUCKET,
    objectName: objectName(asset, 'main'),
    contentType: asset.mime,
    chunkSize: config.chunkSize,
  };
}
