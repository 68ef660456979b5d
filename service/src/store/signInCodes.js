// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { newSecret, sha256Hex } from './tokens.js';

const LIFETIME_MS = 24 * 3600_000;

/**
 * Codes that make one browser the owner's. Whoever may read the data folder or what the server prints gets
 * one; each works once. Only their hashes are kept.
 */
export class SignInCodes {
  #db;

  /** @param {import('./database.js').Database} db */
  constructor(db) {
    this.#db = db;
  }

  /** @returns {Promise<string>} */
  async create() {
    const code = newSecret();
    await this.#db.write(({ run }) =>
      run('INSERT INTO sign_in_codes VALUES (?, ?)', sha256Hex(code), Date.now() + LIFETIME_MS),
    );
    return code;
  }

  /** Uses a code up. @param {string} code @returns {Promise<boolean>} whether it was good */
  redeem(code) {
    return this.#db.write(({ run }) => {
      run('DELETE FROM sign_in_codes WHERE expires_at <= ?', Date.now());
      return run('DELETE FROM sign_in_codes WHERE hash = ?', sha256Hex(code)) > 0;
    });
  }
}
