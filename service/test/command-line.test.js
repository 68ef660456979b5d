// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { statSync } from 'node:fs';
import { after, before, test } from 'node:test';

import { BIN, Client, ServiceProcess } from './support/serviceProcess.js';

/** @type {ServiceProcess} */
let service;

before(async () => {
  service = await ServiceProcess.start();
});
after(() => service.dispose());

/** @param {string[]} args */
const run = (...args) => spawnSync(BIN, args, { encoding: 'utf8' });

test('keys, projects and browsers can be managed beside a running server', async () => {
  const created = run('key', 'create', '--data', service.data, '--name', 'Script');
  assert.match(created.stdout, /^vck_[\w-]+\n$/);
  const client = new Client(service, created.stdout.trim());
  const project = run('project', 'create', '--data', service.data, 'From a script').stdout.trim();
  const { body } = await client.call('GET', '/v1/capture/projects');
  assert.deepEqual(body.projects.at(-1), { id: project, name: 'From a script' });

  assert.equal(run('project', 'delete', '--data', service.data, project).status, 0);
  assert.equal((await client.sign({ projectId: project })).body.error, 'Project not found');

  const page = run('sign-in', '--data', service.data, '--page', '/devices').stdout.trim();
  const opened = await fetch(page, { redirect: 'manual' });
  assert.deepEqual([opened.status, opened.headers.get('location')], [303, '/devices']);

  const id = run('key', 'list', '--data', service.data).stdout.split('\t')[0];
  assert.equal(run('key', 'revoke', '--data', service.data, id).status, 0);
  assert.equal((await client.call('GET', '/v1/capture/projects')).status, 401);
});

test('a second server on the same folder is refused', () => {
  const second = run('serve', '--data', service.data, '--port', '0');
  assert.equal(second.status, 1);
  assert.match(second.stderr, /another server/);
});

test('what would open the library to everybody is refused', () => {
  const folder = ['--data', service.data, '--port', '0'];
  for (const options of [
    ['--host', '0.0.0.0'],
    ['--public-url', 'https://captures.example'],
    ['--host', '0.0.0.0', '--test-mode'],
    ['--port', 'eighty'],
    ['--no-such-option'],
  ]) {
    assert.equal(run('serve', ...folder, ...options).status, 2, options.join(' '));
  }
});

test('the data folder is for its owner only, and SIGTERM is a clean end', async () => {
  const other = await ServiceProcess.start();
  try {
    assert.equal(statSync(`${other.data}/library.db`).mode & 0o077, 0);
    assert.equal(statSync(`${other.data}/objects`).mode & 0o077, 0);
    assert.equal(await other.stop('SIGTERM'), 0);
  } finally {
    await other.dispose();
  }
});
