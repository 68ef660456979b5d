// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { HttpError } from '../http/httpError.js';
import { sameText } from '../store/tokens.js';
import { BUCKET, objectName, parseObjectName } from './objectNames.js';
import { assetOfUpload } from './uploadIds.js';

/** @typedef {import('../store/assets.js').AssetRow} AssetRow */

/**
 * Decides which capture a tus request is about and whether it may touch it, before any tus server
 * sees the request.
 */
export class TusAccess {
  #library;
  #grants;

  /** @param {import('../store/library.js').Library} library @param {import('./grants.js').Grants} grants */
  constructor(library, grants) {
    this.#library = library;
    this.#grants = grants;
  }

  /**
   * For the creation of an upload: everything announced must be what was signed.
   *
   * @param {import('node:http').IncomingMessage} req @returns {AssetRow}
   */
  forCreation(req) {
    const metadata = parseMetadata(header(req, 'upload-metadata') ?? '');
    const target = parseObjectName(metadata.get('objectName') ?? '');
    const asset = this.#authorize(req, target && this.#library.assets.findOwned(target.accountId, target.assetId));
    if (metadata.get('bucketName') !== BUCKET || metadata.get('objectName') !== objectName(asset, 'main')) {
      throw new HttpError(403, 'The upload is not the one that was signed');
    }
    const length = header(req, 'upload-length');
    if (length === undefined) throw new HttpError(400, 'Upload-Length is required');
    if (!/^\d{1,15}$/.test(length)) throw new HttpError(400, 'Upload-Length is not a number');
    if (Number(length) > asset.bytes) throw new HttpError(413, 'The upload is larger than announced');
    if (Number(length) < asset.bytes) throw new HttpError(400, 'The upload is smaller than announced');
    refuseConfirmed(asset);
    return asset;
  }

  /**
   * For a request on an existing upload, whose id tells its capture.
   *
   * @param {import('node:http').IncomingMessage} req @param {string} uploadId @returns {AssetRow}
   */
  forUpload(req, uploadId) {
    const assetId = assetOfUpload(uploadId);
    const asset = this.#authorize(req, assetId === undefined ? undefined : this.#library.assets.find(assetId));
    if (req.method !== 'HEAD') refuseConfirmed(asset);
    return asset;
  }

  /** @param {import('node:http').IncomingMessage} req @param {AssetRow|undefined} asset @returns {AssetRow} */
  #authorize(req, asset) {
    const apiKey = header(req, 'apikey');
    const signature = header(req, 'x-signature');
    if (apiKey === undefined || signature === undefined) {
      throw new HttpError(401, 'The headers x-signature and apikey are required');
    }
    if (!sameText(apiKey, this.#grants.storageKey)) throw new HttpError(403, 'The apikey is not valid');
    // An upload of nobody and a wrong signature look the same from outside.
    if (!asset || !this.#grants.allowsTus(asset, signature)) {
      throw new HttpError(403, 'The signature is not valid or has expired');
    }
    return asset;
  }
}

/** @param {AssetRow} asset */
function refuseConfirmed(asset) {
  // Not 409: a tus client takes that for a wrong offset and keeps trying.
  if (asset.status === 'confirmed') throw new HttpError(403, 'The capture is already confirmed');
}

/** @param {import('node:http').IncomingMessage} req @param {string} name @returns {string|undefined} */
function header(req, name) {
  const value = req.headers[name];
  return Array.isArray(value) ? value.join(',') : value;
}

/** @param {string} text the Upload-Metadata header */
function parseMetadata(text) {
  const metadata = new Map();
  for (const pair of text.split(',')) {
    const [key, value = ''] = pair.trim().split(' ');
    metadata.set(key, Buffer.from(value, 'base64').toString('utf8'));
  }
  return metadata;
}
