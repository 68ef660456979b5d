// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

/**
 * Removes captures for good. The decision is kept before the first file goes, so that a removal that is cut
 * off is finished by the next start.
 */
export class Removals {
  #library;
  #objects;
  #locks;
  #log;

  /** @param {import('../service.js').Service} service */
  constructor({ library, objects, captureLocks, log }) {
    this.#library = library;
    this.#objects = objects;
    this.#locks = captureLocks;
    this.#log = log;
  }

  /**
   * Once this resolves nobody can read or change the capture, even where its files could not go yet.
   *
   * @param {import('../store/assets.js').AssetRow} asset
   * @param {{unlessConfirmed?: boolean}} [options]
   */
  remove(asset, { unlessConfirmed = false } = {}) {
    return this.#locks.run(asset.account_id, asset.capture_id, async () => {
      if (unlessConfirmed && this.#library.assets.find(asset.id)?.status === 'confirmed') return;
      await this.#library.assets.beginRemoval(asset.id);
      await this.#finish(asset.id);
    });
  }

  /** Finishes what was cut off. */
  async resume() {
    for (const assetId of this.#library.assets.removals()) await this.#finish(assetId);
  }

  /** @param {string} assetId */
  async #finish(assetId) {
    try {
      await this.#objects.removeAll(assetId);
      await this.#library.assets.endRemoval(assetId);
    } catch (error) {
      this.#log.error(`files of ${assetId}, which was deleted, are still there: ${/** @type {any} */ (error).message}`);
    }
  }
}
