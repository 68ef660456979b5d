// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { createHash } from 'node:crypto';
import { createReadStream } from 'node:fs';

import { readSidecarFacts } from './sidecarFacts.js';

/**
 * What the library finds out about confirmed captures from their files: the checksum of the main one, and
 * what the page shows of the sidecar. It looks once, at one capture after another, and reads in small
 * pieces, so that the server goes on answering meanwhile.
 */
export class Findings {
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
    for (const asset of this.#library.assets.withoutFindings()) this.#start(asset.id);
  }

  /**
   * Starts with a capture and waits for it, but no longer than `patienceMs`: a client must not be kept
   * waiting for a very large file. It is finished in the background.
   *
   * @param {string} assetId @param {number} patienceMs
   */
  async gather(assetId, patienceMs) {
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
      .then(() => this.#gather(assetId))
      .catch((error) => this.#log.error(`the files of ${assetId} could not be looked into: ${error.message}`))
      .finally(() => this.#running.delete(assetId));
    this.#running.set(assetId, work);
    this.#last = work;
    return work;
  }

  /** @param {string} assetId */
  async #gather(assetId) {
    const asset = this.#library.assets.find(assetId);
    if (!asset) return;
    const { dir, assets } = this.#library;
    const sha256 = asset.sha256 ?? (await sha256Of(dir.object(assetId, 'main')));
    const facts = asset.sidecar_facts ?? JSON.stringify(await readSidecarFacts(dir.object(assetId, 'meta')));
    await assets.setFindings(assetId, sha256, facts);
  }
}

/** @param {string} file @returns {Promise<string>} in hexadecimal digits */
async function sha256Of(file) {
  const hash = createHash('sha256');
  for await (const chunk of createReadStream(file, { highWaterMark: 256 * 1024 })) hash.update(chunk);
  return hash.digest('hex');
}
