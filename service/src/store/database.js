// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { chmodSync } from 'node:fs';
import Database from 'libsql';

/**
 * An open database, as the stores use it. Rows are what their queries select; each store names their types.
 *
 * @typedef {object} Statement
 * @property {(...values: unknown[]) => {changes: number}} run
 * @property {(...values: unknown[]) => any} get
 * @property {(...values: unknown[]) => any[]} all
 *
 * @typedef {object} Db
 * @property {(sql: string) => Statement} prepare
 * @property {(sql: string) => unknown} exec
 * @property {() => void} close
 */

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
];

/**
 * Opens the library's database, bringing its schema up to date. Several processes may have it
 * open at once: the command line works beside a running server.
 *
 * @param {string} file @returns {Db}
 */
export function openDatabase(file) {
  const db = /** @type {any} */ (new Database(file));
  chmodSync(file, 0o600);
  db.pragma('busy_timeout = 5000');
  db.pragma('journal_mode = WAL');
  // An answer that said "confirmed" must survive a power cut.
  db.pragma('synchronous = FULL');
  db.pragma('foreign_keys = ON');
  migrate(db);
  return db;
}

/** @param {Db} db */
function migrate(db) {
  // IMMEDIATE: two processes that start together on an empty folder must not both migrate.
  db.exec('BEGIN IMMEDIATE');
  try {
    const [{ user_version: seen }] = db.prepare('PRAGMA user_version').all();
    if (seen > MIGRATIONS.length) {
      throw new Error('the data folder was written by a newer version of this service');
    }
    for (const sql of MIGRATIONS.slice(seen)) db.exec(sql);
    db.exec(`PRAGMA user_version = ${MIGRATIONS.length}`);
    db.exec('COMMIT');
  } catch (error) {
    db.exec('ROLLBACK');
    throw error;
  }
}

/**
 * Runs `work` in one write transaction.
 *
 * @template T @param {Db} db @param {() => T} work @returns {T}
 */
export function inTransaction(db, work) {
  db.exec('BEGIN IMMEDIATE');
  try {
    const result = work();
    db.exec('COMMIT');
    return result;
  } catch (error) {
    db.exec('ROLLBACK');
    throw error;
  }
}
