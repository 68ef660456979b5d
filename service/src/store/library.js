// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { Accounts } from './accounts.js';
import { Assets } from './assets.js';
import { DataDir } from './dataDir.js';
import { Database } from './database.js';
import { Events } from './events.js';
import { Keys } from './keys.js';
import { Pairings } from './pairings.js';
import { Projects } from './projects.js';
import { Sessions } from './sessions.js';
import { Settings } from './settings.js';
import { SignInCodes } from './signInCodes.js';

/** @typedef {{lifetimeMs: number, pollIntervalMs: number}} PairingOptions */

/** Everything a data folder holds, opened together. */
export class Library {
  #db;

  /** Use `open`. @param {string} root @param {PairingOptions} pairing */
  constructor(root, pairing) {
    this.dir = new DataDir(root).create();
    this.#db = new Database(this.dir.database);
    this.settings = new Settings(this.#db);
    this.accounts = new Accounts(this.#db);
    this.keys = new Keys(this.#db);
    this.projects = new Projects(this.#db);
    this.assets = new Assets(this.#db);
    this.events = new Events(this.#db);
    this.sessions = new Sessions(this.#db);
    this.signInCodes = new SignInCodes(this.#db);
    this.pairings = new Pairings(this.#db, pairing);
  }

  /**
   * @param {string} root the data folder; made when missing
   * @param {PairingOptions} [pairing]
   */
  static async open(root, pairing = { lifetimeMs: 600_000, pollIntervalMs: 2_000 }) {
    const library = new Library(root, pairing);
    await library.accounts.prepare();
    await library.projects.ensureDefault(library.accounts.owner());
    return library;
  }

  async close() {
    await this.#db.close();
  }
}
