// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { Accounts } from './accounts.js';
import { Assets } from './assets.js';
import { DataDir } from './dataDir.js';
import { openDatabase } from './database.js';
import { Events } from './events.js';
import { Keys } from './keys.js';
import { Pairings } from './pairings.js';
import { Projects } from './projects.js';
import { Sessions } from './sessions.js';
import { Settings } from './settings.js';

/** Everything a data folder holds, opened together. */
export class Library {
  #db;

  /**
   * @param {string} root the data folder; made when missing
   * @param {{lifetimeMs: number, pollIntervalMs: number}} [pairing]
   */
  constructor(root, pairing = { lifetimeMs: 600_000, pollIntervalMs: 2_000 }) {
    this.dir = new DataDir(root).create();
    this.#db = openDatabase(this.dir.database);
    this.settings = new Settings(this.#db);
    this.accounts = new Accounts(this.#db);
    this.keys = new Keys(this.#db);
    this.projects = new Projects(this.#db);
    this.assets = new Assets(this.#db);
    this.events = new Events(this.#db);
    this.sessions = new Sessions(this.#db);
    this.pairings = new Pairings(this.#db, this.keys, pairing);
    this.projects.ensureDefault(this.accounts.owner());
  }

  close() {
    this.#db.close();
  }
}
