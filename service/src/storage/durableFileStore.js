// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { createWriteStream } from 'node:fs';
import path from 'node:path';
import { finished, pipeline } from 'node:stream/promises';

import { FileStore } from '@tus/file-store';

import { isDiskFull } from '../http/httpError.js';

/** What the tus server turns into an answer. */
const DISK_FULL = { status_code: 507, body: 'The library has no room left on its disk\n' };

/**
 * The tus file store with a write of our own: it tells a full disk from other failures, and it returns
 * only when the file is closed, so that whoever asks for the offset next does not see it still moving.
 */
export class DurableFileStore extends FileStore {
  /**
   * @param {import('node:stream').Readable} source @param {string} uploadId @param {number} offset
   * @returns {Promise<number>} the new offset
   */
  async write(source, uploadId, offset) {
    const file = createWriteStream(path.join(this.directory, uploadId), { flags: 'r+', start: offset });
    const closed = finished(file).catch(() => {});
    try {
      await pipeline(source, file);
    } catch (error) {
      throw isDiskFull(error) ? DISK_FULL : error;
    } finally {
      await closed;
    }
    return offset + file.bytesWritten;
  }
}
