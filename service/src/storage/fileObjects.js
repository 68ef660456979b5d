// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { randomBytes } from 'node:crypto';
import { createWriteStream } from 'node:fs';
import { mkdir, open, readdir, rename, rm, stat } from 'node:fs/promises';
import path from 'node:path';
import { pipeline } from 'node:stream/promises';

import { HttpError } from '../http/httpError.js';
import { assetOfUpload } from './uploadIds.js';

/** @typedef {import('../store/assets.js').AssetRow} AssetRow */
/** @typedef {import('./objectNames.js').Slot} Slot */

const PART_SUFFIX = '.part';

/**
 * The objects of captures as files. An object appears under its name only when it is whole and on
 * disk: bytes first gather in the uploads folder, in a part file (a PUT) or an upload's (resumable).
 */
export class FileObjects {
  #dir;

  /** @param {import('../store/dataDir.js').DataDir} dir */
  constructor(dir) {
    this.#dir = dir;
  }

  /**
   * Stores a body that came in one piece.
   *
   * @param {AssetRow} asset @param {Slot} slot
   * @param {import('node:stream').Readable} source
   * @param {{bytes: number, inTurn: (publish: () => Promise<void>) => Promise<void>}} expected `inTurn` calls
   *   back when the whole body may take its place, or rejects when nobody wants it any more
   */
  async put(asset, slot, source, { bytes, inTurn }) {
    const part = path.join(this.#dir.uploads, `${asset.id}.${slot}.${randomBytes(8).toString('hex')}${PART_SUFFIX}`);
    try {
      const file = createWriteStream(part, { flags: 'wx', mode: 0o600 });
      await pipeline(source, file);
      if (file.bytesWritten !== bytes) throw new HttpError(400, 'The body is not as long as announced');
      await inTurn(() => this.#publish(part, asset.id, slot));
    } catch (error) {
      await rm(part, { force: true });
      throw error;
    }
  }

  /**
   * Puts the main object in place, from a finished resumable upload where there is one. Repeating it
   * does no harm, whenever an earlier try was cut off.
   *
   * @param {AssetRow} asset
   * @returns {Promise<boolean>} whether the whole main object is there
   */
  async settleMain(asset) {
    if ((await sizeOf(this.#dir.object(asset.id, 'main'))) !== asset.bytes) {
      const finished = await this.#finishedUpload(asset);
      if (!finished) return false;
      await this.#publish(finished, asset.id, 'main');
    }
    return true;
  }

  /** @param {string} assetId @param {Slot} slot @returns {Promise<boolean>} */
  async has(assetId, slot) {
    return (await sizeOf(this.#dir.object(assetId, slot))) !== undefined;
  }

  /** Forgets what was sent of a capture and did not take its place. @param {string} assetId */
  async discardUploads(assetId) {
    for (const name of await this.#uploadNames(assetId)) await rm(path.join(this.#dir.uploads, name), { force: true });
  }

  /**
   * The same for all that no capture waits for any more.
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
      if (assetOfUpload(name) && (await sizeOf(file)) === asset.bytes) return file;
    }
    return undefined;
  }

  /** @param {string} assetId @returns {Promise<string[]>} */
  async #uploadNames(assetId) {
    return (await readdir(this.#dir.uploads)).filter((name) => name.startsWith(`${assetId}.`));
  }

  /** @param {string} file @param {string} assetId @param {Slot} slot */
  async #publish(file, assetId, slot) {
    await flush(file);
    const folder = this.#dir.assetFolder(assetId);
    if (await mkdir(folder, { recursive: true, mode: 0o700 })) await flush(path.dirname(folder));
    await rename(file, this.#dir.object(assetId, slot));
    await flush(folder);
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
