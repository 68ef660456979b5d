// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { newId } from './tokens.js';

const OWNER = 'owner';

/** Who things belong to. A self-hosted library has one account, its owner. */
export class Accounts {
  #db;
  #owner = '';

  /** @param {import('./database.js').Database} db */
  constructor(db) {
    this.#db = db;
  }

  /** Once, before anything else: an account for the owner. */
  async prepare() {
    this.#owner = await this.named(OWNER);
  }

  /** @returns {string} the owner's account id */
  owner() {
    return this.#owner;
  }

  /** The account of that name, made when there is none. @param {string} name @returns {Promise<string>} */
  named(name) {
    return this.#db.write((transaction) => {
      transaction.run('INSERT OR IGNORE INTO accounts VALUES (?, ?, ?)', newId('acc'), name, Date.now());
      return transaction.get('SELECT id FROM accounts WHERE name = ?', name).id;
    });
  }
}
