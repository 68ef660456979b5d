// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { newId } from './tokens.js';

const OWNER = 'owner';

/** Who things belong to. A self-hosted library has one account, its owner. */
export class Accounts {
  #db;

  /** @param {import('./database.js').Db} db */
  constructor(db) {
    this.#db = db;
  }

  /** @returns {string} the owner's account id */
  owner() {
    return this.named(OWNER);
  }

  /** The account of that name, made when there is none. @param {string} name @returns {string} */
  named(name) {
    this.#db.prepare('INSERT OR IGNORE INTO accounts VALUES (?, ?, ?)').run(newId('acc'), name, Date.now());
    return this.#db.prepare('SELECT id FROM accounts WHERE name = ?').get(name).id;
  }
}
