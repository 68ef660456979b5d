// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { createHash } from 'node:crypto';
import { readdirSync, writeFileSync } from 'node:fs';
import https from 'node:https';
import path from 'node:path';
import { after, before, test } from 'node:test';

import Database from 'libsql';

import { eventually } from './support/eventually.js';
import { Client, ServiceProcess } from './support/serviceProcess.js';
import { tusCreate } from './support/tusRequests.js';

const DAY_MS = 24 * 3600_000;

/** @type {ServiceProcess} */
let service;
/** @type {Client} */
let client;

before(async () => {
  service = await ServiceProcess.start(['--test-mode', '--transfer', 'tus']);
  client = await service.client();
});
after(() => service.dispose());

/** Restarts the service on a library that was changed behind its back. @param {string} sql @param {unknown[]} values */
async function restartAfter(sql, ...values) {
  await service.stop();
  const db = new Database(path.join(service.data, 'library.db'));
  db.prepare(sql).run(...values);
  db.close();
  service = await service.restart();
  client = new Client(service, client.apiKey);
}

test('uploads that nobody will finish are forgotten, others are kept', async () => {
  const [old, young] = [await client.sign(), await client.sign()];
  for (const { body } of [old, young]) assert.equal((await tusCreate(body.main.upload, 1000)).status, 201);
  const uploads = path.join(service.data, 'uploads');
  writeFileSync(path.join(uploads, 'cap_nobody.1234'), 'stray');
  await restartAfter('UPDATE assets SET created_at = ? WHERE id = ?', Date.now() - 61 * DAY_MS, old.body.assetId);

  const remaining = () => new Set(readdirSync(uploads).map((name) => name.split('.')[0]));
  await eventually(async () => remaining().size === 1);
  assert.deepEqual([...remaining()], [young.body.assetId]);
  assert.equal((await client.call('POST', `/v1/capture/${old.body.assetId}/refresh`)).status, 404);
});

test('captures that are confirmed while another process writes are still there after a crash', async () => {
  await service.call('POST', '/test/config', { transfer: 'standard' });
  /** @type {string[]} */
  const assetIds = [];
  for (let count = 0; count < 20; count += 1) {
    const { body } = await client.sign({ bytes: 5 });
    await fetch(body.main.upload.uploadUrl, { method: 'PUT', body: 'movie' });
    assetIds.push(body.assetId);
  }
  const db = new Database(path.join(service.data, 'library.db'));
  db.exec('BEGIN IMMEDIATE');
  const during = assetIds.slice(0, 2).map((assetId) => client.confirm(assetId));
  // Everything else goes on meanwhile.
  const startedAt = performance.now();
  assert.equal((await client.call('GET', '/library/captures')).status, 200);
  const waited = performance.now() - startedAt;
  db.exec('ROLLBACK');
  db.close();
  const confirmed = await Promise.all([...during, ...assetIds.slice(2).map((assetId) => client.confirm(assetId))]);

  await service.stop('SIGKILL');
  service = await service.restart();
  client = new Client(service, client.apiKey);
  const { body } = await client.call('GET', '/library/captures');
  const listed = new Set(body.captures.filter((/** @type {any} */ { status }) => status === 'confirmed').map((/** @type {any} */ { id }) => id));
  const lost = assetIds.filter((assetId, index) => confirmed[index].status === 200 && !listed.has(assetId));
  assert.deepEqual(lost, []);
  assert.deepEqual(confirmed.map(({ status }) => status), assetIds.map(() => 200));
  assert.ok(waited < 2000, `${waited} ms`);
});

test('a checksum that a stop interrupted is made up for', async () => {
  await service.call('POST', '/test/config', { transfer: 'standard' });
  const { body } = await client.sign({ bytes: 5 });
  await fetch(body.main.upload.uploadUrl, { method: 'PUT', body: 'movie' });
  await client.confirm(body.assetId);
  await restartAfter('UPDATE assets SET sha256 = NULL');
  const sha256 = await eventually(async () => (await client.capture(body.assetId)).sha256);
  assert.equal(sha256, createHash('sha256').update('movie').digest('hex'));
});

test('a database of a newer version is not touched', async () => {
  const other = await ServiceProcess.start();
  await other.stop();
  const db = new Database(path.join(other.data, 'library.db'));
  db.exec('PRAGMA user_version = 99');
  db.close();
  await assert.rejects(other.restart(), /newer version/);
  await other.dispose();
});

test('it serves HTTPS', async () => {
  const [cert, key] = [path.join(service.data, 'cert.pem'), path.join(service.data, 'key.pem')];
  execFileSync('openssl', [
    'req', '-x509', '-newkey', 'ec', '-pkeyopt', 'ec_paramgen_curve:prime256v1', '-nodes', '-days', '1',
    '-subj', '/CN=localhost', '-addext', 'subjectAltName=IP:127.0.0.1', '-keyout', key, '-out', cert,
  ], { stdio: 'ignore' });
  const secure = await ServiceProcess.start(['--tls-cert', cert, '--tls-key', key]);
  try {
    assert.match(secure.url, /^https:/);
    const answer = await new Promise((resolve, reject) => {
      https.get(secure.signInUrl, { rejectUnauthorized: false }, (found) => resolve(found.resume())).on('error', reject);
    });
    assert.match(answer.headers['set-cookie'][0], /; Secure/);
  } finally {
    await secure.dispose();
  }
});
