// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import assert from 'node:assert/strict';
import { createHash, randomBytes } from 'node:crypto';
import { symlinkSync, unlinkSync } from 'node:fs';
import path from 'node:path';
import { after, before, test } from 'node:test';

import { Upload } from 'tus-js-client';

import { Client, ServiceProcess } from './support/serviceProcess.js';
import { tusCreate, tusHeaders, tusOffset, tusPatch } from './support/tusRequests.js';

const CHUNK = 64 * 1024;
const sha256 = (/** @type {Uint8Array} */ bytes) => createHash('sha256').update(bytes).digest('hex');

/** @type {ServiceProcess} */
let service;
/** @type {Client} */
let client;

before(async () => {
  service = await ServiceProcess.start(['--test-mode', '--transfer', 'tus', '--chunk-size', String(CHUNK)]);
  client = await service.client();
});
after(() => service.dispose());

/** @param {Uint8Array} movie @returns {Promise<{assetId: string, upload: any, location: string}>} */
async function begin(movie) {
  const { body } = await client.sign({ bytes: movie.length });
  const { upload } = body.main;
  const created = await tusCreate(upload, movie.length);
  assert.equal(created.status, 201);
  return { assetId: body.assetId, upload, location: created.headers.get('location') ?? '' };
}

/** @param {any} upload @param {string} location @param {Uint8Array} movie */
async function sendRest(upload, location, movie) {
  let offset = await tusOffset(upload, location);
  while (offset < movie.length) {
    const answer = await tusPatch(upload, location, offset, movie.subarray(offset, offset + upload.chunkSize));
    assert.equal(answer.status, 204);
    offset = Number(answer.headers.get('upload-offset'));
  }
}

test('a recording arrives in chunks, and the library knows its checksum', async () => {
  const movie = randomBytes(CHUNK * 3 + 17);
  const { assetId, upload, location } = await begin(movie);
  assert.deepEqual(
    Object.keys(upload),
    ['kind', 'endpoint', 'signature', 'apiKey', 'bucket', 'objectName', 'contentType', 'chunkSize'],
  );
  await sendRest(upload, location, movie);
  assert.equal((await client.confirm(assetId)).status, 200);
  assert.equal((await client.capture(assetId)).sha256, sha256(movie));
});

test('a tus client that knows nothing of us gets through broken connections', async () => {
  const movie = randomBytes(CHUNK * 4);
  const { body } = await client.sign({ bytes: movie.length });
  const { upload } = body.main;
  await service.call('DELETE', '/test/log');
  await service.call('POST', '/test/faults', {
    rules: [
      { match: { method: 'PATCH' }, skip: 1, action: { resetAfterBytes: 1000 } },
      { match: { method: 'PATCH' }, skip: 2, action: 'swallowAnswer' },
    ],
  });
  await new Promise((resolve, reject) => {
    const { bucket, objectName, contentType } = upload;
    new Upload(movie, {
      endpoint: upload.endpoint,
      headers: { 'x-signature': upload.signature, apikey: upload.apiKey },
      metadata: { bucketName: bucket, objectName, contentType },
      chunkSize: CHUNK,
      retryDelays: [0, 0, 0],
      onSuccess: resolve,
      onError: reject,
    }).start();
  });
  const { requests } = (await service.call('GET', '/test/log')).body;
  assert.equal(requests.filter((/** @type {any} */ { method }) => method === 'HEAD').length, 2);
  assert.equal((await client.confirm(body.assetId)).status, 200);
  assert.equal((await client.capture(body.assetId)).sha256, sha256(movie));
});

test('an upload goes on where it was after the service was killed', async () => {
  const movie = randomBytes(CHUNK * 4);
  const { assetId, upload, location } = await begin(movie);
  await tusPatch(upload, location, 0, movie.subarray(0, CHUNK));
  // The process dies in the middle of the second chunk.
  await service.call('POST', '/test/faults', {
    rules: [{ match: { method: 'PATCH' }, action: { stallAfterBytes: CHUNK / 2 } }],
  });
  const interrupted = tusPatch(upload, location, CHUNK, movie.subarray(CHUNK, CHUNK * 2)).catch((error) => error);
  await service.call('GET', '/test/wait?method=PATCH&count=2');
  await service.stop('SIGKILL');
  assert.ok((await interrupted) instanceof Error);

  const next = await service.restart();
  try {
    const revived = new Client(next, client.apiKey);
    const { body } = await revived.call('POST', `/v1/capture/${assetId}/refresh`);
    const moved = next.url + new URL(location).pathname;
    const offset = await tusOffset(body.main.upload, moved);
    assert.ok(offset >= CHUNK && offset < CHUNK * 2, `offset ${offset}`);
    await sendRest(body.main.upload, moved, movie);
    assert.equal((await revived.confirm(assetId)).status, 200);
    assert.equal((await revived.capture(assetId)).sha256, sha256(movie));
  } finally {
    await next.stop();
    service = await next.restart();
    client = new Client(service, client.apiKey);
  }
});

test('an empty file is complete when it is created', async () => {
  const { assetId } = await begin(new Uint8Array(0));
  assert.equal((await client.confirm(assetId)).status, 200);
});

test('an upload that is not whole cannot be confirmed', async () => {
  const movie = randomBytes(CHUNK * 2);
  const { assetId, upload, location } = await begin(movie);
  await tusPatch(upload, location, 0, movie.subarray(0, CHUNK));
  const early = await client.confirm(assetId);
  assert.equal(early.status, 404);
  assert.notEqual(early.body.error, 'Project not found');
  assert.equal((await client.capture(assetId)).status, 'pending');
  await sendRest(upload, location, movie);
  assert.equal((await client.confirm(assetId)).status, 200);
});

test('a second creation of the same capture does not spoil the first', async () => {
  const movie = randomBytes(CHUNK + 5);
  const { assetId, upload, location } = await begin(movie);
  const abandoned = await tusCreate(upload, movie.length);
  assert.notEqual(abandoned.headers.get('location'), location);
  await sendRest(upload, location, movie);
  assert.equal((await client.confirm(assetId)).status, 200);
  assert.equal((await client.capture(assetId)).sha256, sha256(movie));
});

test('a chunk at a wrong offset is refused and changes nothing', async () => {
  const movie = randomBytes(CHUNK);
  const { upload, location } = await begin(movie);
  assert.equal((await tusPatch(upload, location, 10, movie.subarray(0, 100))).status, 409);
  assert.equal(await tusOffset(upload, location), 0);
});

test('creation takes only what was signed', async () => {
  const { body } = await client.sign({ bytes: 100 });
  const { body: other } = await client.sign({ bytes: 100 });
  const { upload } = body.main;
  const refused = {
    'another length': await tusCreate(upload, 99),
    'a larger length': await tusCreate(upload, 101),
    'another object': await tusCreate(upload, 100, { objectName: other.main.upload.objectName }),
    'another bucket': await tusCreate(upload, 100, { bucketName: 'elsewhere' }),
    'a forged signature': await tusCreate({ ...upload, signature: `${upload.signature.slice(0, -2)}xx` }, 100),
    'a forged apikey': await tusCreate({ ...upload, apiKey: 'guess' }, 100),
  };
  assert.deepEqual(Object.values(refused).map(({ status }) => status), [400, 413, 403, 403, 403, 403]);
  const bare = await fetch(upload.endpoint, { method: 'POST', headers: { 'Tus-Resumable': '1.0.0' } });
  assert.equal(bare.status, 401);
});

test('the signature of one capture does not open the upload of another, nor when both are named', async () => {
  const movie = randomBytes(100);
  const mine = await begin(movie);
  const theirs = await begin(movie);
  const head = await fetch(theirs.location, { method: 'HEAD', headers: tusHeaders(mine.upload) });
  assert.equal(head.status, 403);
  assert.equal((await tusPatch(mine.upload, theirs.location, 0, movie)).status, 403);
  // The tus server must not read another id out of the address than the one that was checked.
  const theirId = path.basename(theirs.location);
  await tusPatch(mine.upload, `${mine.location}?/${theirId}`, 0, movie);
  for (const address of [`${mine.location}?/${theirId}`, `${mine.location}%2f${theirId}`, `${mine.location}.json`]) {
    await fetch(address, { method: 'DELETE', headers: tusHeaders(mine.upload) });
  }
  assert.equal(await tusOffset(theirs.upload, theirs.location), 0);
});

test('a confirmed capture takes no more uploads', async () => {
  const movie = randomBytes(100);
  const { assetId, upload, location } = await begin(movie);
  await sendRest(upload, location, movie);
  await client.confirm(assetId);
  assert.equal((await tusCreate(upload, 100)).status, 403);
  assert.equal((await tusPatch(upload, location, 100, movie)).status, 403);
});

test('a file that changed its size since it was signed starts over', async () => {
  const captureId = crypto.randomUUID();
  const { body: first } = await client.sign({ captureId, bytes: 100 });
  await tusCreate(first.main.upload, 100);
  const movie = randomBytes(150);
  const { body: second } = await client.sign({ captureId, bytes: 150 });
  assert.equal(second.assetId, first.assetId);
  assert.equal((await tusCreate(first.main.upload, 100)).status, 403);
  const created = await tusCreate(second.main.upload, 150);
  await sendRest(second.main.upload, created.headers.get('location') ?? '', movie);
  assert.equal((await client.confirm(second.assetId)).status, 200);
});

test('a full disk is told as such, in both ways of storing', async () => {
  const movie = randomBytes(1000);
  const { upload, location } = await begin(movie);
  // The kernel's own full device stands in for the upload's file.
  const file = path.join(service.data, 'uploads', path.basename(location));
  unlinkSync(file);
  symlinkSync('/dev/full', file);
  assert.equal((await tusPatch(upload, location, 0, movie)).status, 507);

  const huge = await client.sign({ bytes: 2 ** 52 });
  assert.equal(huge.status, 507);
});

test('discarding storage speaks the same protocol', async () => {
  const discarding = await ServiceProcess.start(['--test-mode', '--transfer', 'tus', '--discard']);
  try {
    const bench = await discarding.client();
    const { body } = await bench.sign({ bytes: 300 });
    const { upload } = body.main;
    const location = (await tusCreate(upload, 300)).headers.get('location') ?? '';
    assert.equal((await tusPatch(upload, location, 5, new Uint8Array(10))).status, 409);
    assert.equal((await bench.confirm(body.assetId)).status, 404);
    await sendRest({ ...upload, chunkSize: 128 }, location, new Uint8Array(300));
    assert.equal((await bench.confirm(body.assetId)).status, 200);
  } finally {
    await discarding.dispose();
  }
});
