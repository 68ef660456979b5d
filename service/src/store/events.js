// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

/** The library keeps the newest usage events only; they are a hint, not an archive. */
const KEPT_EVENTS = 10_000;

/** @typedef {{id: string, name: string, props: Record<string, string|number|boolean>}} UsageEvent */

/** Usage events that applications have posted. */
export class Events {
  #db;

  /** @param {import('./database.js').Database} db */
  constructor(db) {
    this.#db = db;
  }

  /**
   * Adds a batch. An event that arrives twice counts once: a client whose answer was lost sends again.
   *
   * @param {string} accountId @param {UsageEvent[]} batch
   */
  async add(accountId, batch) {
    const now = Date.now();
    await this.#db.write(({ run }) => {
      for (const { id, name, props } of batch) {
        run('INSERT OR IGNORE INTO events VALUES (?, ?, ?, ?, ?)', accountId, id, name, JSON.stringify(props), now);
      }
      run('DELETE FROM events WHERE rowid <= (SELECT max(rowid) FROM events) - ?', KEPT_EVENTS);
    });
  }

  /** @returns {(UsageEvent & {receivedAt: number})[]} oldest first */
  list() {
    return this.#db
      .all('SELECT * FROM events ORDER BY rowid')
      .map((row) => ({ id: row.id, name: row.name, props: JSON.parse(row.props), receivedAt: row.received_at }));
  }

  async clear() {
    await this.#db.write(({ run }) => run('DELETE FROM events'));
  }
}
