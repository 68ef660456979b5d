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

  /** @param {import('./database.js').Database} db */
  constructor(db) {
    this.#db = db;
  }

  /** @param {string} accountId @param {string} name @returns {Promise<string>} the new project's id */
  create(accountId, name) {
    return this.#db.write((transaction) => Projects.#insert(transaction, accountId, name));
  }

  /** A new account finds one project waiting; an owner who deleted all of them is left in peace. */
  async ensureDefault(/** @type {string} */ accountId) {
    await this.#db.write((transaction) => {
      const { n } = transaction.get('SELECT count(*) AS n FROM projects WHERE account_id = ?', accountId);
      if (n === 0) Projects.#insert(transaction, accountId, DEFAULT_PROJECT);
    });
  }

  /** @param {import('./database.js').Transaction} transaction @param {string} accountId @param {string} name */
  static #insert({ run }, accountId, name) {
    const id = newId('prj');
    run('INSERT INTO projects (id, account_id, name, created_at) VALUES (?, ?, ?, ?)', id, accountId, name, Date.now());
    return id;
  }

  /** @param {string} accountId @returns {ProjectRow[]} */
  list(accountId) {
    return this.#db.all(
      'SELECT * FROM projects WHERE account_id = ? AND deleted_at IS NULL ORDER BY created_at, rowid', accountId,
    );
  }

  /** The project, deleted or not. @returns {ProjectRow|undefined} */
  find(/** @type {string} */ accountId, /** @type {string} */ projectId) {
    return this.#db.get('SELECT * FROM projects WHERE id = ? AND account_id = ?', projectId, accountId);
  }

  /** @returns {ProjectRow|undefined} */
  findLive(/** @type {string} */ accountId, /** @type {string} */ projectId) {
    const row = this.find(accountId, projectId);
    return row && row.deleted_at === null ? row : undefined;
  }

  /** @param {string} accountId @param {string} projectId @returns {Promise<boolean>} */
  delete(accountId, projectId) {
    return this.#deleteWhere('id = ? AND account_id = ?', projectId, accountId);
  }

  /** For tests, which hold ids of several accounts. @param {string} projectId @returns {Promise<boolean>} */
  deleteAnyones(projectId) {
    return this.#deleteWhere('id = ?', projectId);
  }

  /** @param {string} condition @param {string[]} values @returns {Promise<boolean>} */
  async #deleteWhere(condition, ...values) {
    const sql = `UPDATE projects SET deleted_at = ? WHERE ${condition} AND deleted_at IS NULL`;
    return (await this.#db.write(({ run }) => run(sql, Date.now(), ...values))) > 0;
  }
}
