// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { createHash } from 'node:crypto';
import { createReadStream } from 'node:fs';

/**
 * Checksums of confirmed captures, one file at a time. Reading happens in small pieces, so that the
 * server goes on answering meanwhile.
 */
export class Checksums {
  #library;
  #log;
  /** @type {Map<string, Promise<void>>} */
  #running = new Map();
  #last = Promise.resolve();

  /** @param {import('../store/library.js').Library} library @param {import('../http/log.js').Log} log */
  constructor(library, log) {
    this.#library = library;
    this.#log = log;
  }

  /** Takes up what a stop interrupted. */
  resume() {
    for (const asset of this.#library.assets.withoutChecksum()) this.#start(asset.id);
  }

  /**
   * Starts the checksum of a capture and waits for it, but no longer than `patienceMs`: a client
   * must not be kept waiting for a very large file. It is finished in the background.
   *
   * @param {string} assetId @param {number} patienceMs
   */
  async compute(assetId, patienceMs) {
    /** @type {NodeJS.Timeout|undefined} */
    let timer;
    const patience = new Promise((resolve) => {
      timer = setTimeout(resolve, patienceMs);
    });
    await Promise.race([this.#start(assetId), patience]);
    clearTimeout(timer);
  }

  /** @param {string} assetId @returns {Promise<void>} never rejects */
  #start(assetId) {
    const running = this.#running.get(assetId);
    if (running) return running;
    const work = this.#last
      .then(() => this.#hash(assetId))
      .catch((error) => this.#log.error(`checksum of ${assetId} failed: ${error.message}`))
      .finally(() => this.#running.delete(assetId));
    this.#running.set(assetId, work);
    this.#last = work;
    return work;
  }

  /** @param {string} assetId */
  async #hash(assetId) {
    const hash = createHash('sha256');
    const file = createReadStream(this.#library.dir.object(assetId, 'main'), { highWaterMark: 256 * 1024 });
    for await (const chunk of file) hash.update(chunk);
    this.#library.assets.setChecksum(assetId, hash.digest('hex'));
  }
}
