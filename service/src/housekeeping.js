// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

const EVERY_MS = 24 * 3600_000;
/** Longer than a laptop is likely to stay shut over the holidays. An application whose capture was forgotten sends it anew. */
const ABANDONED_AFTER_MS = 60 * 24 * 3600_000;

/** At the start and once a day, frees the disk of what was deleted and of uploads that nobody will finish. */
export class Housekeeping {
  #service;
  /** @type {NodeJS.Timeout|undefined} */
  #timer;

  /** @param {import('./service.js').Service} service */
  constructor(service) {
    this.#service = service;
  }

  start() {
    this.#run();
    this.#timer = setInterval(() => this.#run(), EVERY_MS);
    this.#timer.unref();
  }

  stop() {
    clearInterval(this.#timer);
  }

  async #run() {
    const { library, objects, removals, log } = this.#service;
    try {
      await removals.resume();
      for (const asset of library.assets.pendingSince(Date.now() - ABANDONED_AFTER_MS)) {
        await removals.remove(asset, { unlessConfirmed: true });
        log.info(`forgot ${asset.id}, which was never uploaded in full`);
      }
      await objects.discardStrayUploads((assetId) => library.assets.find(assetId)?.status === 'pending');
    } catch (error) {
      log.error(`housekeeping failed: ${/** @type {any} */ (error).message}`);
    }
  }
}
