// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { Keys } from './keys.js';
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
  #options;

  /**
   * @param {import('./database.js').Database} db
   * @param {{lifetimeMs: number, pollIntervalMs: number}} options
   */
  constructor(db, options) {
    this.#db = db;
    this.#options = options;
  }

  /**
   * @param {string} deviceName @param {string} remoteAddress
   * @returns {Promise<{deviceCode: string, publicCode: string}|undefined>} nothing when too many are waiting
   */
  request(deviceName, remoteAddress) {
    const now = Date.now();
    const deviceCode = newSecret();
    return this.#db.write(({ get, run }) => {
      run('DELETE FROM pairings WHERE expires_at < ?', now - KEPT_AFTER_EXPIRY_MS);
      const { n } = get(`SELECT count(*) AS n FROM pairings WHERE status = 'pending' AND expires_at > ?`, now);
      if (n >= MAX_WAITING) return undefined;
      let publicCode = newReadableCode();
      while (this.find(publicCode)) publicCode = newReadableCode();
      run(
        `INSERT INTO pairings (public_code, device_hash, device_name, remote_address, status, created_at, expires_at)
         VALUES (?, ?, ?, ?, 'pending', ?, ?)`,
        publicCode, sha256Hex(deviceCode), deviceName, remoteAddress, now, now + this.#options.lifetimeMs,
      );
      return { deviceCode, publicCode };
    });
  }

  /**
   * What the device is told. A code that does not exist looks like one that has expired.
   *
   * @param {string} deviceCode @returns {Promise<PollOutcome>}
   */
  poll(deviceCode) {
    const hash = sha256Hex(deviceCode);
    return this.#db.write((transaction) => {
      const { get, run } = transaction;
      const now = Date.now();
      /** @type {PairingRow|undefined} */
      const row = get('SELECT * FROM pairings WHERE device_hash = ?', hash);
      if (!row || !sameText(row.device_hash, hash)) return { status: 'expired' };
      if (row.status === 'denied' || row.status === 'claimed') return { status: row.status };
      if (now >= row.expires_at) return { status: 'expired' };
      // Measured from the last poll that counted, so that a hasty device is slowed and not starved.
      // A tenth of slack: the device's clock and ours may differ.
      if (row.last_poll_at !== null && now - row.last_poll_at < this.#options.pollIntervalMs * 0.9) {
        return { status: 'pending' };
      }
      run('UPDATE pairings SET last_poll_at = ? WHERE public_code = ?', now, row.public_code);
      if (row.status === 'pending') return { status: 'pending' };
      run(`UPDATE pairings SET status = 'claimed' WHERE public_code = ?`, row.public_code);
      const accountId = /** @type {string} */ (row.account_id);
      return { status: 'approved', apiKey: Keys.createWithin(transaction, accountId, row.device_name) };
    });
  }

  /** @param {string} publicCode @returns {PairingRow|undefined} */
  find(publicCode) {
    return this.#db.get('SELECT * FROM pairings WHERE public_code = ?', publicCode);
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
   * @returns {Promise<boolean>} false when there was nothing left to decide
   */
  async decide(publicCode, accountId, decision) {
    const sql = `UPDATE pairings SET status = ?, account_id = ?
                 WHERE public_code = ? AND status = 'pending' AND expires_at > ?`;
    return (await this.#db.write(({ run }) => run(sql, decision, accountId, publicCode, Date.now()))) > 0;
  }

  /** Ends a pairing's time now. @param {string} publicCode @returns {Promise<boolean>} */
  async expire(publicCode) {
    const sql = 'UPDATE pairings SET expires_at = ? WHERE public_code = ?';
    return (await this.#db.write(({ run }) => run(sql, Date.now() - 1, publicCode))) > 0;
  }
}
