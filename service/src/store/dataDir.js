// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { mkdirSync } from 'node:fs';
import path from 'node:path';

/**
 * Every place on disk that the service uses. Nothing else builds paths under the data folder.
 */
export class DataDir {
  /** @param {string} root */
  constructor(root) {
    this.root = path.resolve(root);
    this.database = path.join(this.root, 'library.db');
    this.lock = path.join(this.root, 'server.lock');
    this.uploads = path.join(this.root, 'uploads');
    this.objects = path.join(this.root, 'objects');
  }

  create() {
    // Recordings of somebody's screen: for the owner of the service only.
    for (const dir of [this.root, this.uploads, this.objects]) {
      mkdirSync(dir, { recursive: true, mode: 0o700 });
    }
    return this;
  }

  /** @param {string} assetId */
  assetFolder(assetId) {
    return path.join(this.objects, assetId);
  }

  /** @param {string} assetId @param {'main'|'thumb'|'meta'} slot */
  object(assetId, slot) {
    return path.join(this.assetFolder(assetId), slot);
  }
}
