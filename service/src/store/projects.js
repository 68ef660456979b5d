// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { newId } from './tokens.js';

const DEFAULT_PROJECT = 'My captures';

/** @typedef {{id: string, account_id: string, name: string, created_at: number, deleted_at: number|null}} ProjectRow */

/**
 * Projects that captures go to. A deleted project keeps its row: the captures that went to it
 * stay in the library, while new ones are refused.
 */
export class Projects {
  #db;

  /** @param {import('./database.js').Db} db */
  constructor(db) {
    this.#db = db;
  }

  /** @param {string} accountId @param {string} name @returns {string} the new project's id */
  create(accountId, name) {
    const id = newId('prj');
    this.#db
      .prepare('INSERT INTO projects (id, account_id, name, created_at) VALUES (?, ?, ?, ?)')
      .run(id, accountId, name, Date.now());
    return id;
  }

  /** A new account finds one project waiting; an owner who deleted all of them is left in peace. */
  ensureDefault(/** @type {string} */ accountId) {
    const { n } = this.#db.prepare('SELECT count(*) AS n FROM projects WHERE account_id = ?').get(accountId);
    if (n === 0) this.create(accountId, DEFAULT_PROJECT);
  }

  /** @param {string} accountId @returns {ProjectRow[]} */
  list(accountId) {
    return this.#db
      .prepare('SELECT * FROM projects WHERE account_id = ? AND deleted_at IS NULL ORDER BY created_at, rowid')
      .all(accountId);
  }

  /** The project, deleted or not. @returns {ProjectRow|undefined} */
  find(/** @type {string} */ accountId, /** @type {string} */ projectId) {
    return this.#db.prepare('SELECT * FROM projects WHERE id = ? AND account_id = ?').get(projectId, accountId);
  }

  /** @returns {ProjectRow|undefined} */
  findLive(/** @type {string} */ accountId, /** @type {string} */ projectId) {
    const row = this.find(accountId, projectId);
    return row && row.deleted_at === null ? row : undefined;
  }

  /** @param {string} accountId @param {string} projectId @returns {boolean} */
  delete(accountId, projectId) {
    const { changes } = this.#db
      .prepare('UPDATE projects SET deleted_at = ? WHERE id = ? AND account_id = ? AND deleted_at IS NULL')
      .run(Date.now(), projectId, accountId);
    return changes > 0;
  }

  /** For tests, which hold ids of several accounts. @param {string} projectId @returns {boolean} */
  deleteAnyones(projectId) {
    const { changes } = this.#db
      .prepare('UPDATE projects SET deleted_at = ? WHERE id = ? AND deleted_at IS NULL')
      .run(Date.now(), projectId);
    return changes > 0;
  }
}
