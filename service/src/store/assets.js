// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { newId } from './tokens.js';

/**
 * @typedef {{id: string, account_id: string, project_id: string, capture_id: string, kind: 'video'|'image',
 *   mime: string, bytes: number, duration_ms: number|null, name: string|null, thumb_bytes: number|null,
 *   wants_meta: number, status: 'pending'|'confirmed', sha256: string|null, created_at: number,
 *   confirmed_at: number|null}} AssetRow
 *
 * @typedef {{projectId: string, captureId: string, kind: 'video'|'image', mime: string, bytes: number,
 *   durationMs: number|null, name: string|null, thumbBytes: number|null, wantsMeta: boolean}} AssetFacts
 */

/** Registered captures. One capture id of one account is one asset, however often it is signed. */
export class Assets {
  #db;

  /** @param {import('./database.js').Db} db */
  constructor(db) {
    this.#db = db;
  }

  /**
   * @param {string} accountId @param {AssetFacts} facts
   * @returns {AssetRow}
   */
  register(accountId, facts) {
    // A pending capture that is signed again takes the newest facts: the application may have moved
    // it to another project meanwhile. A confirmed one never changes.
    this.#db
      .prepare(
        `INSERT INTO assets (id, account_id, project_id, capture_id, kind, mime, bytes, duration_ms, name,
                             thumb_bytes, wants_meta, status, created_at)
         VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, 'pending', ?)
         ON CONFLICT (account_id, capture_id) DO UPDATE SET
           project_id = excluded.project_id, kind = excluded.kind, mime = excluded.mime, bytes = excluded.bytes,
           duration_ms = excluded.duration_ms, name = excluded.name, thumb_bytes = excluded.thumb_bytes,
           wants_meta = excluded.wants_meta
         WHERE status = 'pending'`,
      )
      .run(
        newId('cap'),
        accountId,
        facts.projectId,
        facts.captureId,
        facts.kind,
        facts.mime,
        facts.bytes,
        facts.durationMs,
        facts.name,
        facts.thumbBytes,
        facts.wantsMeta ? 1 : 0,
        Date.now(),
      );
    return /** @type {AssetRow} */ (this.findByCapture(accountId, facts.captureId));
  }

  /** @returns {AssetRow|undefined} */
  findByCapture(/** @type {string} */ accountId, /** @type {string} */ captureId) {
    return this.#db
      .prepare('SELECT * FROM assets WHERE account_id = ? AND capture_id = ?')
      .get(accountId, captureId);
  }

  /** @returns {AssetRow|undefined} */
  findOwned(/** @type {string} */ accountId, /** @type {string} */ assetId) {
    return this.#db.prepare('SELECT * FROM assets WHERE id = ? AND account_id = ?').get(assetId, accountId);
  }

  /** For storage requests, which carry a signature instead of an account. @returns {AssetRow|undefined} */
  find(/** @type {string} */ assetId) {
    return this.#db.prepare('SELECT * FROM assets WHERE id = ?').get(assetId);
  }

  markConfirmed(/** @type {string} */ assetId) {
    this.#db
      .prepare(`UPDATE assets SET status = 'confirmed', confirmed_at = ? WHERE id = ? AND status = 'pending'`)
      .run(Date.now(), assetId);
  }

  setChecksum(/** @type {string} */ assetId, /** @type {string} */ sha256) {
    this.#db.prepare('UPDATE assets SET sha256 = ? WHERE id = ?').run(sha256, assetId);
  }

  /** @returns {AssetRow[]} confirmed captures whose checksum was not finished before the last stop */
  withoutChecksum() {
    return this.#db.prepare(`SELECT * FROM assets WHERE status = 'confirmed' AND sha256 IS NULL`).all();
  }

  /** @returns {AssetRow[]} captures that were announced before a moment and never confirmed */
  pendingSince(/** @type {number} */ before) {
    return this.#db.prepare(`SELECT * FROM assets WHERE status = 'pending' AND created_at < ?`).all(before);
  }

  /**
   * Newest first.
   *
   * @param {string} accountId
   * @param {{projectId?: string, status?: string, limit: number, offset?: number}} query
   * @returns {AssetRow[]}
   */
  list(accountId, { projectId = '', status = '', limit, offset = 0 }) {
    return this.#db
      .prepare(
        `SELECT * FROM assets
         WHERE account_id = ? AND (? = '' OR project_id = ?) AND (? = '' OR status = ?)
         ORDER BY created_at DESC, rowid DESC LIMIT ? OFFSET ?`,
      )
      .all(accountId, projectId, projectId, status, status, limit, offset);
  }

  /** @param {string} accountId @param {string} status @param {string} projectId @returns {number} */
  count(accountId, status, projectId = '') {
    return this.#db
      .prepare(`SELECT count(*) AS n FROM assets WHERE account_id = ? AND status = ? AND (? = '' OR project_id = ?)`)
      .get(accountId, status, projectId, projectId).n;
  }

  remove(/** @type {string} */ assetId) {
    this.#db.prepare('DELETE FROM assets WHERE id = ?').run(assetId);
  }
}
