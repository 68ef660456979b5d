// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { inTransaction } from './database.js';
import { newReadableCode, newSecret, sameText, sha256Hex } from './tokens.js';

/** Ended pairings stay this long, so that a late poll still hears how it ended. */
const KEPT_AFTER_EXPIRY_MS = 24 * 3600_000;
/** More requests than this at once is not a person connecting devices. */
const MAX_WAITING = 100;

/**
 * @typedef {{public_code: string, device_hash: string, device_name: string, remote_address: string,
 *   status: 'pending'|'approved'|'denied'|'claimed', account_id: string|null, created_at: number,
 *   expires_at: number, last_poll_at: number|null}} PairingRow
 *
 * @typedef {{status: 'pending'|'denied'|'expired'|'claimed'}|{status: 'approved', apiKey: string}} PollOutcome
 */

/**
 * Devices asking to be connected.
 *
 *   pending --approve--> approved --first poll--> claimed
 *      `------deny-----> denied
 *
 * and "expired" is what pending and approved look like after their time. The device code is known to
 * the device alone (a hash is kept), the public code is what the approval page shows. The API key is
 * made at the moment it is handed out, so it never rests anywhere.
 */
export class Pairings {
  #db;
  #keys;
  #options;

  /**
   * @param {import('./database.js').Db} db
   * @param {import('./keys.js').Keys} keys
   * @param {{lifetimeMs: number, pollIntervalMs: number}} options
   */
  constructor(db, keys, options) {
    this.#db = db;
    this.#keys = keys;
    this.#options = options;
  }

  /**
   * @param {string} deviceName @param {string} remoteAddress
   * @returns {{deviceCode: string, publicCode: string}|undefined} nothing when too many are waiting
   */
  request(deviceName, remoteAddress) {
    const now = Date.now();
    const deviceCode = newSecret();
    return inTransaction(this.#db, () => {
      this.#db.prepare('DELETE FROM pairings WHERE expires_at < ?').run(now - KEPT_AFTER_EXPIRY_MS);
      const { n } = this.#db
        .prepare(`SELECT count(*) AS n FROM pairings WHERE status = 'pending' AND expires_at > ?`)
        .get(now);
      if (n >= MAX_WAITING) return undefined;
      let publicCode = newReadableCode();
      while (this.find(publicCode)) publicCode = newReadableCode();
      this.#db
        .prepare(
          `INSERT INTO pairings (public_code, device_hash, device_name, remote_address, status, created_at, expires_at)
           VALUES (?, ?, ?, ?, 'pending', ?, ?)`,
        )
        .run(publicCode, sha256Hex(deviceCode), deviceName, remoteAddress, now, now + this.#options.lifetimeMs);
      return { deviceCode, publicCode };
    });
  }

  /**
   * What the device is told. A code that does not exist looks like one that has expired.
   *
   * @param {string} deviceCode @returns {PollOutcome}
   */
  poll(deviceCode) {
    const hash = sha256Hex(deviceCode);
    return inTransaction(this.#db, () => {
      const now = Date.now();
      /** @type {PairingRow|undefined} */
      const row = this.#db.prepare('SELECT * FROM pairings WHERE device_hash = ?').get(hash);
      if (!row || !sameText(row.device_hash, hash)) return { status: 'expired' };
      if (row.status === 'denied' || row.status === 'claimed') return { status: row.status };
      if (now >= row.expires_at) return { status: 'expired' };
      // Measured from the last poll that counted, so that a hasty device is slowed and not starved.
      // A tenth of slack: the device's clock and ours may differ.
      if (row.last_poll_at !== null && now - row.last_poll_at < this.#options.pollIntervalMs * 0.9) {
        return { status: 'pending' };
      }
      this.#db.prepare('UPDATE pairings SET last_poll_at = ? WHERE public_code = ?').run(now, row.public_code);
      if (row.status === 'pending') return { status: 'pending' };
      this.#db.prepare(`UPDATE pairings SET status = 'claimed' WHERE public_code = ?`).run(row.public_code);
      return { status: 'approved', apiKey: this.#keys.create(/** @type {string} */ (row.account_id), row.device_name) };
    });
  }

  /** @param {string} publicCode @returns {PairingRow|undefined} */
  find(publicCode) {
    return this.#db.prepare('SELECT * FROM pairings WHERE public_code = ?').get(publicCode);
  }

  /**
   * What a person is told about a code: its state, with lapsed ones named so.
   *
   * @param {PairingRow} row @returns {'pending'|'approved'|'denied'|'claimed'|'expired'}
   */
  static stateOf(row) {
    const open = row.status === 'pending' || row.status === 'approved';
    return open && Date.now() >= row.expires_at ? 'expired' : row.status;
  }

  /**
   * The owner's decision; it counts once.
   *
   * @param {string} publicCode @param {string} accountId @param {'approved'|'denied'} decision
   * @returns {boolean} false when there was nothing left to decide
   */
  decide(publicCode, accountId, decision) {
    const { changes } = this.#db
      .prepare(
        `UPDATE pairings SET status = ?, account_id = ?
         WHERE public_code = ? AND status = 'pending' AND expires_at > ?`,
      )
      .run(decision, accountId, publicCode, Date.now());
    return changes > 0;
  }

  /** Ends a pairing's time now. @param {string} publicCode @returns {boolean} */
  expire(publicCode) {
    const { changes } = this.#db
      .prepare('UPDATE pairings SET expires_at = ? WHERE public_code = ?')
      .run(Date.now() - 1, publicCode);
    return changes > 0;
  }
}
