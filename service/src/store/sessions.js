// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { newSecret, sha256Hex } from './tokens.js';

const LIFETIME_MS = 30 * 24 * 3600_000;

/** Signed-in browsers of the owner, for libraries that ask for a password. */
export class Sessions {
  #db;

  /** @param {import('./database.js').Db} db */
  constructor(db) {
    this.#db = db;
  }

  static lifetimeSeconds = LIFETIME_MS / 1000;

  /** @returns {string} the session's secret, for the cookie */
  create() {
    const secret = newSecret();
    const now = Date.now();
    this.#db.prepare('DELETE FROM sessions WHERE expires_at < ?').run(now);
    this.#db.prepare('INSERT INTO sessions VALUES (?, ?, ?)').run(sha256Hex(secret), now, now + LIFETIME_MS);
    return secret;
  }

  /** @param {string} secret */
  isLive(secret) {
    return Boolean(
      this.#db.prepare('SELECT 1 FROM sessions WHERE hash = ? AND expires_at > ?').get(sha256Hex(secret), Date.now()),
    );
  }

  /** @param {string} secret */
  end(secret) {
    this.#db.prepare('DELETE FROM sessions WHERE hash = ?').run(sha256Hex(secret));
  }
}
