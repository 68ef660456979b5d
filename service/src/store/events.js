// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

/** The library keeps the newest usage events only; they are a hint, not an archive. */
const KEPT_EVENTS = 10_000;

/** @typedef {{id: string, name: string, props: Record<string, string|number|boolean>}} UsageEvent */

/** Usage events that applications have posted. */
export class Events {
  #db;

  /** @param {import('./database.js').Db} db */
  constructor(db) {
    this.#db = db;
  }

  /**
   * Adds a batch. An event that arrives twice counts once: a client whose answer was lost sends again.
   *
   * @param {string} accountId @param {UsageEvent[]} batch
   */
  add(accountId, batch) {
    const insert = this.#db.prepare('INSERT OR IGNORE INTO events VALUES (?, ?, ?, ?, ?)');
    const now = Date.now();
    for (const event of batch) insert.run(accountId, event.id, event.name, JSON.stringify(event.props), now);
    this.#db
      .prepare('DELETE FROM events WHERE rowid <= (SELECT max(rowid) FROM events) - ?')
      .run(KEPT_EVENTS);
  }

  /** @returns {(UsageEvent & {receivedAt: number})[]} oldest first */
  list() {
    return this.#db
      .prepare('SELECT * FROM events ORDER BY rowid')
      .all()
      .map((row) => ({ id: row.id, name: row.name, props: JSON.parse(row.props), receivedAt: row.received_at }));
  }

  clear() {
    this.#db.exec('DELETE FROM events');
  }
}
