// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { newId, newSecret, sameText, sha256Hex } from './tokens.js';

/** How stale "last used" may get: writing it on every request would cost a disk flush each. */
const LAST_USED_GRAIN_MS = 60_000;

/**
 * @typedef {{id: string, account_id: string, name: string, created_at: number,
 *   last_used_at: number|null, revoked_at: number|null}} KeyRow
 */

/** API keys of connected devices. Only their hashes are kept. */
export class Keys {
  #db;

  /** @param {import('./database.js').Db} db */
  constructor(db) {
    this.#db = db;
  }

  /**
   * @param {string} accountId @param {string} name
   * @returns {string} the key itself, which cannot be read again later
   */
  create(accountId, name) {
    const key = newSecret('vck_');
    this.#db
      .prepare('INSERT INTO keys (id, account_id, hash, name, created_at) VALUES (?, ?, ?, ?, ?)')
      .run(newId('key'), accountId, sha256Hex(key), name, Date.now());
    return key;
  }

  /**
   * The live key that this text is, if it is one.
   *
   * @param {string} key @returns {KeyRow|undefined}
   */
  authenticate(key) {
    const hash = sha256Hex(key);
    const row = this.#db.prepare('SELECT * FROM keys WHERE hash = ? AND revoked_at IS NULL').get(hash);
    if (!row || !sameText(row.hash, hash)) return undefined;
    const now = Date.now();
    if (now - (row.last_used_at ?? 0) > LAST_USED_GRAIN_MS) {
      this.#db.prepare('UPDATE keys SET last_used_at = ? WHERE id = ?').run(now, row.id);
    }
    return row;
  }

  /** @param {string} accountId @returns {KeyRow[]} */
  list(accountId) {
    return this.#db
      .prepare('SELECT * FROM keys WHERE account_id = ? AND revoked_at IS NULL ORDER BY created_at, id')
      .all(accountId);
  }

  /** @param {string} accountId @param {string} keyId @returns {boolean} */
  revoke(accountId, keyId) {
    const { changes } = this.#db
      .prepare('UPDATE keys SET revoked_at = ? WHERE id = ? AND account_id = ? AND revoked_at IS NULL')
      .run(Date.now(), keyId, accountId);
    return changes > 0;
  }

  /** @param {string} key the key's own text @returns {boolean} */
  revokeByText(key) {
    const { changes } = this.#db
      .prepare('UPDATE keys SET revoked_at = ? WHERE hash = ? AND revoked_at IS NULL')
      .run(Date.now(), sha256Hex(key));
    return changes > 0;
  }
}
