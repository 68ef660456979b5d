// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { chmodSync } from 'node:fs';
import { setTimeout as sleep } from 'node:timers/promises';

import Libsql from 'libsql';

/** How often a writer that finds the database locked by another process looks again. */
const RETRY_MS = 15;
/** How long it does so: shorter than the applications' own time-out, so that they hear why. */
const PATIENCE_MS = 30_000;

/** Each entry is one schema version; a database records how many it has seen. Append only. */
const MIGRATIONS = [
  `
  CREATE TABLE settings (name TEXT PRIMARY KEY, value TEXT NOT NULL);
  CREATE TABLE accounts (id TEXT PRIMARY KEY, name TEXT NOT NULL UNIQUE, created_at INTEGER NOT NULL);
  CREATE TABLE keys (
    id TEXT PRIMARY KEY,
    account_id TEXT NOT NULL REFERENCES accounts(id),
    hash TEXT NOT NULL UNIQUE,
    name TEXT NOT NULL,
    created_at INTEGER NOT NULL,
    last_used_at INTEGER,
    revoked_at INTEGER
  );
  CREATE TABLE projects (
    id TEXT PRIMARY KEY,
    account_id TEXT NOT NULL REFERENCES accounts(id),
    name TEXT NOT NULL,
    created_at INTEGER NOT NULL,
    deleted_at INTEGER
  );
  CREATE TABLE assets (
    id TEXT PRIMARY KEY,
    account_id TEXT NOT NULL REFERENCES accounts(id),
    project_id TEXT NOT NULL REFERENCES projects(id),
    capture_id TEXT NOT NULL,
    kind TEXT NOT NULL,
    mime TEXT NOT NULL,
    bytes INTEGER NOT NULL,
    duration_ms INTEGER,
    name TEXT,
    thumb_bytes INTEGER,
    wants_meta INTEGER NOT NULL,
    status TEXT NOT NULL CHECK (status IN ('pending', 'confirmed')),
    sha256 TEXT,
    created_at INTEGER NOT NULL,
    confirmed_at INTEGER,
    UNIQUE (account_id, capture_id)
  );
  CREATE INDEX assets_by_date ON assets (account_id, created_at DESC);
  CREATE TABLE pairings (
    public_code TEXT PRIMARY KEY,
    device_hash TEXT NOT NULL UNIQUE,
    device_name TEXT NOT NULL,
    remote_address TEXT NOT NULL,
    status TEXT NOT NULL CHECK (status IN ('pending', 'approved', 'denied', 'claimed')),
    account_id TEXT REFERENCES accounts(id),
    created_at INTEGER NOT NULL,
    expires_at INTEGER NOT NULL,
    last_poll_at INTEGER
  );
  CREATE TABLE sessions (hash TEXT PRIMARY KEY, created_at INTEGER NOT NULL, expires_at INTEGER NOT NULL);
  CREATE TABLE events (
    account_id TEXT NOT NULL REFERENCES accounts(id),
    id TEXT NOT NULL,
    name TEXT NOT NULL,
    props TEXT NOT NULL,
    received_at INTEGER NOT NULL,
    PRIMARY KEY (account_id, id)
  );
  `,
  `
  ALTER TABLE assets ADD COLUMN sidecar_facts TEXT;
  CREATE TABLE removals (asset_id TEXT PRIMARY KEY, decided_at INTEGER NOT NULL);
  CREATE TABLE sign_in_codes (hash TEXT PRIMARY KEY, expires_at INTEGER NOT NULL);
  `,
  `
  CREATE INDEX assets_by_recording ON assets (account_id, json_extract(sidecar_facts, '$.recordingId'))
    WHERE json_extract(sidecar_facts, '$.recordingId') IS NOT NULL;
  CREATE INDEX assets_by_moment ON assets (account_id, json_extract(sidecar_facts, '$.capturedAt'))
    WHERE json_extract(sidecar_facts, '$.capturedAt') IS NOT NULL;
  `,
];

/**
 * What a write may do. Rows are what its queries select; each store names their types.
 *
 * @typedef {object} Transaction
 * @property {(sql: string, ...values: unknown[]) => any} get the first row
 * @property {(sql: string, ...values: unknown[]) => any[]} all
 * @property {(sql: string, ...values: unknown[]) => number} run the number of rows changed
 */

/**
 * The library's database. Several processes may have it open at once: the command line works beside a
 * running server, and so does a backup.
 *
 * There is no way to write but in a transaction that takes the write lock first. A statement that meets a
 * lock on its own is left half done by the driver, and keeps every later one from being committed. The wait
 * for the lock is a timer, never a sleep inside SQLite, so that the server goes on answering meanwhile.
 */
export class Database {
  #db;
  /** @type {Promise<unknown>} the last of the writes, which take turns */
  #last = Promise.resolve();
  #closing = false;

  /** Opens the file, bringing its schema up to date. Blocks while another process writes. @param {string} file */
  constructor(file) {
    const db = /** @type {any} */ (new Libsql(file));
    chmodSync(file, 0o600);
    this.#db = db;
    db.pragma(`busy_timeout = ${PATIENCE_MS}`);
    db.pragma('journal_mode = WAL');
    // An answer that said "confirmed" must survive a power cut.
    db.pragma('synchronous = FULL');
    db.pragma('foreign_keys = ON');
    this.#migrate();
    db.pragma('busy_timeout = 0');
  }

  /** The first row. @param {string} sql @param {unknown[]} values */
  get(sql, ...values) {
    return this.#db.prepare(sql).get(values);
  }

  /** @param {string} sql @param {unknown[]} values @returns {any[]} */
  all(sql, ...values) {
    return this.#db.prepare(sql).all(values);
  }

  /**
   * Runs `work` in one write transaction, after the writes that were asked for before. Rejects with
   * SQLITE_BUSY when another process keeps the database locked for too long.
   *
   * @template T @param {(transaction: Transaction) => T} work must not wait for anything @returns {Promise<T>}
   */
  write(work) {
    const deadline = performance.now() + PATIENCE_MS;
    const turn = this.#last.then(async () => {
      while (!this.#begin(performance.now() > deadline || this.#closing)) await sleep(RETRY_MS);
      return this.#commit(work);
    });
    this.#last = turn.catch(() => {});
    return turn;
  }

  /** Closes after the writes under way; those that still wait for another process are given up. */
  async close() {
    this.#closing = true;
    await this.#last;
    this.#db.close();
  }

  /** @param {boolean} isLastTry @returns {boolean} false when another process is writing */
  #begin(isLastTry) {
    try {
      this.#db.exec('BEGIN IMMEDIATE');
      return true;
    } catch (error) {
      if (isLastTry || /** @type {any} */ (error).code !== 'SQLITE_BUSY') throw error;
      return false;
    }
  }

  /** @template T @param {(transaction: Transaction) => T} work @returns {T} */
  #commit(work) {
    try {
      const result = work({
        get: (sql, ...values) => this.get(sql, ...values),
        all: (sql, ...values) => this.all(sql, ...values),
        run: (sql, ...values) => this.#db.prepare(sql).run(values).changes,
      });
      this.#db.exec('COMMIT');
      return result;
    } catch (error) {
      // A full disk has rolled it back already.
      if (this.#db.inTransaction) this.#db.exec('ROLLBACK');
      throw error;
    }
  }

  #migrate() {
    // The lock first: two processes that start together on an empty folder must not both migrate.
    this.#begin(true);
    this.#commit(() => {
      const { user_version: seen } = this.get('PRAGMA user_version');
      if (seen > MIGRATIONS.length) {
        throw new Error('the data folder was written by a newer version of this service');
      }
      for (const sql of MIGRATIONS.slice(seen)) this.#db.exec(sql);
      this.#db.exec(`PRAGMA user_version = ${MIGRATIONS.length}`);
    });
  }
}
