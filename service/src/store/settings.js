// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { newSecret } from './tokens.js';

/** Values that a data folder keeps for its whole life. */
export class Settings {
  #db;

  /** @param {import('./database.js').Db} db */
  constructor(db) {
    this.#db = db;
  }

  /** The secret behind every signature this server issues; made on first use. */
  signingSecret() {
    this.#db.prepare('INSERT OR IGNORE INTO settings VALUES (?, ?)').run('signing_secret', newSecret());
    return this.#db.prepare('SELECT value FROM settings WHERE name = ?').get('signing_secret').value;
  }
}
