// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { newId } from './tokens.js';

/**
 * @typedef {{id: string, account_id: string, project_id: string, capture_id: string, kind: 'video'|'image',
 *   mime: string, bytes: number, duration_ms: number|null, name: string|null, thumb_bytes: number|null,
 *   wants_meta: number, status: 'pending'|'confirmed', sha256: string|null, sidecar_facts: string|null,
 *   created_at: number, confirmed_at: number|null}} AssetRow
 *
 * @typedef {{projectId: string, captureId: string, kind: 'video'|'image', mime: string, bytes: number,
 *   durationMs: number|null, name: string|null, thumbBytes: number|null, wantsMeta: boolean}} AssetFacts
 */

/** Registered captures. One capture id of one account is one asset, however often it is signed. */
export class Assets {
  #db;

  /** @param {import('./database.js').Database} db */
  constructor(db) {
    this.#db = db;
  }

  /**
   * @param {string} accountId @param {AssetFacts} facts
   * @returns {Promise<{asset: AssetRow, isResized: boolean}>} whether it was announced with another size before
   */
  register(accountId, facts) {
    return this.#db.write((transaction) => {
      const find = () =>
        transaction.get('SELECT * FROM assets WHERE account_id = ? AND capture_id = ?', accountId, facts.captureId);
      const before = find();
      // A pending capture that is signed again takes the newest facts: the application may have moved
      // it to another project meanwhile. A confirmed one never changes.
      transaction.run(
        `INSERT INTO assets (id, account_id, project_id, capture_id, kind, mime, bytes, duration_ms, name,
                             thumb_bytes, wants_meta, status, created_at)
         VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, 'pending', ?)
         ON CONFLICT (account_id, capture_id) DO UPDATE SET
           project_id = excluded.project_id, kind = excluded.kind, mime = excluded.mime, bytes = excluded.bytes,
           duration_ms = excluded.duration_ms, name = excluded.name, thumb_bytes = excluded.thumb_bytes,
           wants_meta = excluded.wants_meta
         WHERE status = 'pending'`,
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
      const asset = find();
      return { asset, isResized: before !== undefined && before.bytes !== asset.bytes };
    });
  }

  /** @returns {AssetRow|undefined} */
  findByCapture(/** @type {string} */ accountId, /** @type {string} */ captureId) {
    return this.#db.get('SELECT * FROM assets WHERE account_id = ? AND capture_id = ?', accountId, captureId);
  }

  /** @returns {AssetRow|undefined} */
  findOwned(/** @type {string} */ accountId, /** @type {string} */ assetId) {
    return this.#db.get('SELECT * FROM assets WHERE id = ? AND account_id = ?', assetId, accountId);
  }

  /** For storage requests, which carry a signature instead of an account. @returns {AssetRow|undefined} */
  find(/** @type {string} */ assetId) {
    return this.#db.get('SELECT * FROM assets WHERE id = ?', assetId);
  }

  async markConfirmed(/** @type {string} */ assetId) {
    await this.#db.write(({ run }) =>
      run(`UPDATE assets SET status = 'confirmed', confirmed_at = ? WHERE id = ? AND status = 'pending'`, Date.now(), assetId),
    );
  }

  /** What its files were found to hold. @param {string} assetId @param {string} sha256 @param {string} sidecarFacts */
  async setFindings(assetId, sha256, sidecarFacts) {
    await this.#db.write(({ run }) =>
      run('UPDATE assets SET sha256 = ?, sidecar_facts = ? WHERE id = ?', sha256, sidecarFacts, assetId),
    );
  }

  /** @returns {AssetRow[]} confirmed captures whose files were not looked into before the last stop */
  withoutFindings() {
    return this.#db.all(
      `SELECT * FROM assets WHERE status = 'confirmed' AND (sha256 IS NULL OR sidecar_facts IS NULL)`,
    );
  }

  /** @returns {AssetRow[]} captures that were announced before a moment and never confirmed */
  pendingSince(/** @type {number} */ before) {
    return this.#db.all(`SELECT * FROM assets WHERE status = 'pending' AND created_at < ?`, before);
  }

  /**
   * Newest first.
   *
   * @param {string} accountId
   * @param {{projectId?: string, status?: string, limit: number, offset?: number}} query
   * @returns {AssetRow[]}
   */
  list(accountId, { projectId = '', status = '', limit, offset = 0 }) {
    return this.#db.all(
      `SELECT * FROM assets
       WHERE account_id = ? AND (? = '' OR project_id = ?) AND (? = '' OR status = ?)
       ORDER BY created_at DESC, rowid DESC LIMIT ? OFFSET ?`,
      accountId, projectId, projectId, status, status, limit, offset,
    );
  }

  /**
   * Confirmed movies that were recorded by a camera, or by none, newest first.
   *
   * @param {string} accountId @param {boolean} byCamera
   * @param {{recordingId: string} | {since: number, until: number}} where `capturedAt`, in milliseconds
   * @returns {AssetRow[]}
   */
  layers(accountId, byCamera, where) {
    const fact = (/** @type {string} */ name) => `json_extract(sidecar_facts, '$.${name}')`;
    const select = `SELECT * FROM assets WHERE account_id = ? AND status = 'confirmed' AND kind = 'video'
       AND sidecar_facts IS NOT NULL AND (coalesce(${fact('source')}, '') = 'camera') = ?`;
    const order = 'ORDER BY created_at DESC, rowid DESC';
    if ('recordingId' in where) {
      return this.#db.all(
        `${select} AND ${fact('recordingId')} = ? ${order}`, accountId, byCamera ? 1 : 0, where.recordingId,
      );
    }
    return this.#db.all(
      `${select} AND ${fact('capturedAt')} BETWEEN ? AND ? ${order}`,
      accountId, byCamera ? 1 : 0, where.since, where.until,
    );
  }

  /** @param {string} accountId @param {string} status @param {string} projectId @returns {number} */
  count(accountId, status, projectId = '') {
    return this.#db.get(
      `SELECT count(*) AS n FROM assets WHERE account_id = ? AND status = ? AND (? = '' OR project_id = ?)`,
      accountId, status, projectId, projectId,
    ).n;
  }

  /** Takes a capture out of the library and notes that its files have to go. @param {string} assetId */
  async beginRemoval(assetId) {
    await this.#db.write(({ run }) => {
      run('DELETE FROM assets WHERE id = ?', assetId);
      run('INSERT OR IGNORE INTO removals VALUES (?, ?)', assetId, Date.now());
    });
  }

  /** Its files are gone. @param {string} assetId */
  async endRemoval(assetId) {
    await this.#db.write(({ run }) => run('DELETE FROM removals WHERE asset_id = ?', assetId));
  }

  /** @returns {string[]} ids of removed captures whose files may still be there */
  removals() {
    return this.#db.all('SELECT asset_id FROM removals').map((row) => row.asset_id);
  }
}
