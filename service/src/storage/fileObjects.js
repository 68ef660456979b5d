// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { randomBytes } from 'node:crypto';
import { createWriteStream } from 'node:fs';
import { mkdir, open, readdir, rename, rm, stat } from 'node:fs/promises';
import path from 'node:path';
import { pipeline } from 'node:stream/promises';

import { HttpError } from '../http/httpError.js';

/** @typedef {import('../store/assets.js').AssetRow} AssetRow */
/** @typedef {import('./objectNames.js').Slot} Slot */

const PART_SUFFIX = '.part';

/**
 * The objects of captures as files. An object appears under its name only when it is whole and on
 * disk: bytes first gather in a temporary file (a PUT) or in the uploads folder (resumable).
 */
export class FileObjects {
  #dir;
  /** @type {Map<string, Promise<boolean>>} */
  #settling = new Map();

  /** @param {import('../store/dataDir.js').DataDir} dir */
  constructor(dir) {
    this.#dir = dir;
  }

  /**
   * Stores a body that came in one piece.
   *
   * @param {AssetRow} asset @param {Slot} slot
   * @param {import('node:stream').Readable} source
   * @param {{bytes: number, stillWanted: () => boolean}} expected
   */
  async put(asset, slot, source, expected) {
    const folder = this.#dir.assetFolder(asset.id);
    await mkdir(folder, { recursive: true, mode: 0o700 });
    const part = path.join(folder, `${slot}.${randomBytes(8).toString('hex')}${PART_SUFFIX}`);
    try {
      const file = createWriteStream(part, { flags: 'wx', mode: 0o600 });
      await pipeline(source, file);
      if (file.bytesWritten !== expected.bytes) throw new HttpError(400, 'The body is not as long as announced');
      // A slow request that its client gave up on must not replace what was confirmed meanwhile.
      if (!expected.stillWanted()) throw new HttpError(409, 'The capture is already confirmed');
      await this.#publish(part, this.#dir.object(asset.id, slot));
    } catch (error) {
      await rm(part, { force: true });
      throw error;
    }
  }

  /**
   * Puts the main object in place, from a finished resumable upload where there is one. Repeating it
   * does no harm, whenever an earlier try was cut off; two at once are one.
   *
   * @param {AssetRow} asset
   * @returns {Promise<boolean>} whether the whole main object is there
   */
  settleMain(asset) {
    const settling =
      this.#settling.get(asset.id) ?? this.#settleMain(asset).finally(() => this.#settling.delete(asset.id));
    this.#settling.set(asset.id, settling);
    return settling;
  }

  /** @param {AssetRow} asset */
  async #settleMain(asset) {
    const main = this.#dir.object(asset.id, 'main');
    if ((await sizeOf(main)) !== asset.bytes) {
      const finished = await this.#finishedUpload(asset);
      if (!finished) return false;
      await mkdir(this.#dir.assetFolder(asset.id), { recursive: true, mode: 0o700 });
      await this.#publish(finished, main);
    }
    await this.discardUploads(asset.id);
    await this.#discardParts(asset.id);
    return true;
  }

  /** @param {string} assetId @param {Slot} slot @returns {Promise<boolean>} */
  async has(assetId, slot) {
    return (await sizeOf(this.#dir.object(assetId, slot))) !== undefined;
  }

  /** Forgets resumable uploads of a capture, finished or not. @param {string} assetId */
  async discardUploads(assetId) {
    for (const name of await this.#uploadNames(assetId)) await rm(path.join(this.#dir.uploads, name), { force: true });
  }

  /**
   * Forgets resumable uploads that no capture waits for any more.
   *
   * @param {(assetId: string) => boolean} isAwaited
   */
  async discardStrayUploads(isAwaited) {
    const assetIds = new Set((await readdir(this.#dir.uploads)).map((name) => name.split('.')[0]));
    for (const assetId of assetIds) if (!isAwaited(assetId)) await this.discardUploads(assetId);
  }

  /** @param {string} assetId */
  async removeAll(assetId) {
    await this.discardUploads(assetId);
    await rm(this.#dir.assetFolder(assetId), { recursive: true, force: true });
  }

  /** @param {AssetRow} asset @returns {Promise<string|undefined>} the file of a whole upload */
  async #finishedUpload(asset) {
    for (const name of await this.#uploadNames(asset.id)) {
      const file = path.join(this.#dir.uploads, name);
      if (!name.endsWith('.json') && (await sizeOf(file)) === asset.bytes) return file;
    }
    return undefined;
  }

  /** @param {string} assetId @returns {Promise<string[]>} */
  async #uploadNames(assetId) {
    return (await readdir(this.#dir.uploads)).filter((name) => name.startsWith(`${assetId}.`));
  }

  /** @param {string} assetId */
  async #discardParts(assetId) {
    const folder = this.#dir.assetFolder(assetId);
    for (const name of await readdir(folder)) {
      if (name.endsWith(PART_SUFFIX)) await rm(path.join(folder, name), { force: true });
    }
  }

  /** @param {string} from @param {string} to */
  async #publish(from, to) {
    await flush(from);
    await rename(from, to);
    await flush(path.dirname(to));
  }
}

/** @param {string} fileOrFolder */
async function flush(fileOrFolder) {
  const handle = await open(fileOrFolder, 'r');
  try {
    await handle.sync();
  } finally {
    await handle.close();
  }
}

/** @param {string} file @returns {Promise<number|undefined>} */
async function sizeOf(file) {
  try {
    return (await stat(file)).size;
  } catch (error) {
    if (/** @type {any} */ (error).code === 'ENOENT') return undefined;
    throw error;
  }
}
