// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import Database from 'libsql';

/**
 * One server per data folder. The lock is SQLite's own on a file of its own, so that the kernel
 * releases it however the process ends, and no stale pid file can block a restart.
 */
export class ServerLock {
  #db;

  /** @param {string} file */
  constructor(file) {
    this.#db = new Database(file);
    try {
      this.#db.exec('BEGIN EXCLUSIVE');
    } catch {
      this.#db.close();
      throw new Error('another server is already using this data folder');
    }
  }

  release() {
    this.#db.exec('ROLLBACK');
    this.#db.close();
  }
}
