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
  /** @type {Set<string>} ids of keys whose use is about to be noted */
  #touching = new Set();

  /** @param {import('./database.js').Database} db */
  constructor(db) {
    this.#db = db;
  }

  /**
   * @param {string} accountId @param {string} name
   * @returns {Promise<string>} the key itself, which cannot be read again later
   */
  create(accountId, name) {
    return this.#db.write((transaction) => Keys.createWithin(transaction, accountId, name));
  }

  /** The same as part of a larger write. @param {import('./database.js').Transaction} transaction */
  static createWithin({ run }, /** @type {string} */ accountId, /** @type {string} */ name) {
    const key = newSecret('vck_');
    run(
      'INSERT INTO keys (id, account_id, hash, name, created_at) VALUES (?, ?, ?, ?, ?)',
      newId('key'), accountId, sha256Hex(key), name, Date.now(),
    );
    return key;
  }

  /**
   * The live key that this text is, if it is one.
   *
   * @param {string} key @returns {KeyRow|undefined}
   */
  authenticate(key) {
    const hash = sha256Hex(key);
    /** @type {KeyRow & {hash: string}|undefined} */
    const row = this.#db.get('SELECT * FROM keys WHERE hash = ? AND revoked_at IS NULL', hash);
    if (!row || !sameText(row.hash, hash)) return undefined;
    this.#noteUse(row);
    return row;
  }

  /** In the background: no request waits or fails for it. @param {KeyRow} row */
  #noteUse({ id, last_used_at: lastUsedAt }) {
    const now = Date.now();
    if (now - (lastUsedAt ?? 0) <= LAST_USED_GRAIN_MS || this.#touching.has(id)) return;
    this.#touching.add(id);
    this.#db
      .write(({ run }) => run('UPDATE keys SET last_used_at = ? WHERE id = ?', now, id))
      .catch(() => {})
      .finally(() => this.#touching.delete(id));
  }

  /** @param {string} accountId @returns {KeyRow[]} */
  list(accountId) {
    return this.#db.all(
      'SELECT * FROM keys WHERE account_id = ? AND revoked_at IS NULL ORDER BY created_at, id', accountId,
    );
  }

  /** @param {string} accountId @param {string} keyId @returns {Promise<boolean>} */
  revoke(accountId, keyId) {
    return this.#revokeWhere('id = ? AND account_id = ?', keyId, accountId);
  }

  /** @param {string} key the key's own text @returns {Promise<boolean>} */
  revokeByText(key) {
    return this.#revokeWhere('hash = ?', sha256Hex(key));
  }

  /** @param {string} condition @param {string[]} values @returns {Promise<boolean>} */
  async #revokeWhere(condition, ...values) {
    const sql = `UPDATE keys SET revoked_at = ? WHERE ${condition} AND revoked_at IS NULL`;
    return (await this.#db.write(({ run }) => run(sql, Date.now(), ...values))) > 0;
  }
}
