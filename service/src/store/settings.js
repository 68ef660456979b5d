// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { newSecret } from './tokens.js';

/** Values that a data folder keeps. */
export class Settings {
  #db;

  /** @param {import('./database.js').Database} db */
  constructor(db) {
    this.#db = db;
  }

  /** The secret behind every signature this server issues; made on first use. @returns {Promise<string>} */
  signingSecret() {
    return this.#db.write(({ get, run }) => {
      run('INSERT OR IGNORE INTO settings VALUES (?, ?)', 'signing_secret', newSecret());
      return get('SELECT value FROM settings WHERE name = ?', 'signing_secret').value;
    });
  }

  /** Where people reach the server that ran last, for commands beside it. @returns {string|undefined} */
  origin() {
    return this.#db.get('SELECT value FROM settings WHERE name = ?', 'origin')?.value;
  }

  /** @param {string} origin */
  async setOrigin(origin) {
    await this.#db.write(({ run }) => run('INSERT OR REPLACE INTO settings VALUES (?, ?)', 'origin', origin));
  }
}
