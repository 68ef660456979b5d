// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

/**
 * Stands in for the objects on disk when the service only measures how fast bytes arrive: they are
 * counted and dropped, and everything is forgotten at the end of the process.
 */
export class DiscardObjects {
  /** @type {Map<string, number>} bytes received, by "asset/slot" */
  #sizes = new Map();

  /**
   * @param {import('../store/assets.js').AssetRow} asset @param {import('./objectNames.js').Slot} slot
   * @param {import('node:stream').Readable} source
   */
  async put(asset, slot, source) {
    this.record(asset.id, slot, await countBytes(source));
  }

  /** @param {string} assetId @param {string} slot @param {number} bytes */
  record(assetId, slot, bytes) {
    this.#sizes.set(`${assetId}/${slot}`, bytes);
  }

  /** @param {import('../store/assets.js').AssetRow} asset */
  async settleMain(asset) {
    return this.#sizes.get(`${asset.id}/main`) === asset.bytes;
  }

  async has() {
    return false;
  }

  async discardUploads() {}

  async discardStrayUploads() {}

  async removeAll() {}
}

/** @param {import('node:stream').Readable} source @returns {Promise<number>} */
export function countBytes(source) {
  return new Promise((resolve, reject) => {
    let bytes = 0;
    source.on('data', (chunk) => {
      bytes += chunk.length;
    });
    source.on('end', () => resolve(bytes));
    source.on('error', reject);
  });
}
