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

/** @template T @param {() => Promise<T|undefined|null|false>} look @returns {Promise<T>} */
async function eventually(look) {
  const deadline = Date.now() + 5000;
  for (;;) {
    const seen = await look();
    if (seen) return seen;
    assert.ok(Date.now() < deadline, 'it did not happen');
    await new Promise((resolve) => setTimeout(resolve, 20));
  }
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
      https.get(secure.url, { rejectUnauthorized: false }, (found) => resolve(found.resume())).on('error', reject);
    });
    assert.equal(answer.statusCode, 200);
    assert.match(answer.headers['set-cookie'][0], /; Secure/);
  } finally {
    await secure.dispose();
  }
});
