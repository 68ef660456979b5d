// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { BUCKET, objectName } from './objectNames.js';

/** @typedef {import('../store/assets.js').AssetRow} AssetRow */

/** Leave to store the objects of one capture: made when it is signed, checked when bytes arrive. */
export class Grants {
  #signer;
  #config;
  #storageKey;

  /** @param {import('./signer.js').Signer} signer @param {import('../config.js').Config} config */
  constructor(signer, config) {
    this.#signer = signer;
    this.#config = config;
    this.#storageKey = signer.mac(['storage key']);
  }

  /** Names this storage to its clients; the signature beside it is what grants anything. */
  get storageKey() {
    return this.#storageKey;
  }

  /** @param {AssetRow} asset */
  signTus(asset) {
    return this.#signer.sign(tusParts(asset), this.#config.grantLifetimeMs);
  }

  /** @param {AssetRow} asset @param {string|undefined} signature */
  allowsTus(asset, signature) {
    return this.#signer.verify(signature, tusParts(asset));
  }

  /** @param {AssetRow} asset @param {import('./objectNames.js').Slot} slot @returns {string} path and query */
  putPath(asset, slot) {
    const signature = this.#signer.sign(putParts(asset, slot), this.#config.grantLifetimeMs);
    return `/storage/put/${objectName(asset, slot)}?signature=${signature}`;
  }

  /** @param {AssetRow} asset @param {import('./objectNames.js').Slot} slot @param {string|undefined} signature */
  allowsPut(asset, slot, signature) {
    return this.#signer.verify(signature, putParts(asset, slot));
  }
}

/** @param {AssetRow} asset */
function tusParts(asset) {
  return ['tus', BUCKET, objectName(asset, 'main'), String(asset.bytes)];
}

/** @param {AssetRow} asset @param {import('./objectNames.js').Slot} slot */
function putParts(asset, slot) {
  const bytes = { main: asset.bytes, thumb: asset.thumb_bytes, meta: null }[slot];
  return ['put', BUCKET, objectName(asset, slot), String(bytes)];
}
