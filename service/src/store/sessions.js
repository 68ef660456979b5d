// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { newSecret, sha256Hex } from './tokens.js';

const LIFETIME_MS = 30 * 24 * 3600_000;

/** Signed-in browsers of the owner. */
export class Sessions {
  #db;

  /** @param {import('./database.js').Database} db */
  constructor(db) {
    this.#db = db;
  }

  /** @returns {Promise<string>} the session's secret, for the cookie */
  async create() {
    const secret = newSecret();
    const now = Date.now();
    await this.#db.write(({ run }) => {
      run('DELETE FROM sessions WHERE expires_at < ?', now);
      run('INSERT INTO sessions VALUES (?, ?, ?)', sha256Hex(secret), now, now + LIFETIME_MS);
    });
    return secret;
  }

  /** @param {string} secret @returns {boolean} */
  isLive(secret) {
    return Boolean(
      this.#db.get('SELECT 1 FROM sessions WHERE hash = ? AND expires_at > ?', sha256Hex(secret), Date.now()),
    );
  }

  /** @param {string} secret */
  async end(secret) {
    await this.#db.write(({ run }) => run('DELETE FROM sessions WHERE hash = ?', sha256Hex(secret)));
  }
}
