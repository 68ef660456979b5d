// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { PassThrough } from 'node:stream';

import { HttpError } from './httpError.js';

const MAX_JSON_BYTES = 1024 * 1024;
const MAX_FORM_BYTES = 16 * 1024;
const BODY_TIMEOUT_MS = 30_000;

/** Requests that sent "Expect: 100-continue" and have not been told to go on. */
const awaitingContinue = new WeakSet();

/** @param {import('node:http').IncomingMessage} req */
export function holdContinue(req) {
  awaitingContinue.add(req);
}

/**
 * Called by whoever is about to read a body: a client that waits for leave gets it only now, after its
 * request has been found acceptable, and is spared sending a body that will be refused.
 *
 * @param {import('node:http').IncomingMessage} req @param {import('node:http').ServerResponse} res
 */
export function acceptBody(req, res) {
  if (awaitingContinue.delete(req)) res.writeContinue();
}

/**
 * @param {import('./router.js').Exchange} exchange
 * @returns {Promise<Record<string, unknown>>} the body, which is a JSON object
 */
export async function readJson({ req, res }) {
  const type = (req.headers['content-type'] ?? '').split(';')[0].trim().toLowerCase();
  if (type !== 'application/json') throw new HttpError(415, 'The body must be application/json');
  acceptBody(req, res);
  const text = await readText(req, MAX_JSON_BYTES);
  let value;
  try {
    value = JSON.parse(text);
  } catch {
    throw new HttpError(400, 'The body is not valid JSON');
  }
  if (value === null || typeof value !== 'object' || Array.isArray(value)) {
    throw new HttpError(400, 'The body must be a JSON object');
  }
  return value;
}

/** @param {import('./router.js').Exchange} exchange @returns {Promise<URLSearchParams>} */
export async function readForm({ req, res }) {
  const type = (req.headers['content-type'] ?? '').split(';')[0].trim().toLowerCase();
  if (type !== 'application/x-www-form-urlencoded') throw new HttpError(415, 'The body must be a form');
  acceptBody(req, res);
  return new URLSearchParams(await readText(req, MAX_FORM_BYTES));
}

/**
 * The body as a stream that may fail without taking its connection along: whoever reads it can run
 * out of disk and still answer. What is left of the body is then read and dropped.
 *
 * @param {import('node:http').IncomingMessage} req
 */
export function bodyStream(req) {
  const body = new PassThrough({ highWaterMark: 256 * 1024 });
  // The client may leave before anybody reads: a failure that nobody listens for ends the process.
  body.on('error', () => {});
  req.once('error', (error) => body.destroy(error));
  req.once('close', () => {
    if (!req.complete) body.destroy(new Error('the client went away'));
  });
  body.once('close', () => {
    req.unpipe(body);
    if (!req.destroyed) req.resume();
  });
  return req.pipe(body);
}

/** @param {import('node:http').IncomingMessage} req @param {number} limit @returns {Promise<string>} */
function readText(req, limit) {
  const { promise, resolve, reject } = deferred();
  /** @type {Buffer[]} */
  const chunks = [];
  let size = 0;
  // A body that trickles in for ever would hold its request for ever.
  const timer = setTimeout(() => reject(new HttpError(408, 'The body took too long')), BODY_TIMEOUT_MS);
  req.on('data', (chunk) => {
    size += chunk.length;
    if (size > limit) reject(new HttpError(413, 'The body is too large'));
    else chunks.push(chunk);
  });
  req.once('end', () => resolve(Buffer.concat(chunks).toString('utf8')));
  req.once('error', reject);
  return promise.finally(() => clearTimeout(timer));
}

/** @returns {{promise: Promise<string>, resolve: (text: string) => void, reject: (error: unknown) => void}} */
function deferred() {
  /** @type {any} */
  const parts = {};
  parts.promise = new Promise((resolve, reject) => Object.assign(parts, { resolve, reject }));
  return parts;
}
