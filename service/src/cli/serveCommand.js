// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { readFileSync } from 'node:fs';
import { parseArgs } from 'node:util';

import { isLoopbackName } from '../http/hostGuard.js';
import { Service } from '../service.js';
import { UsageError } from './usage.js';

/** @param {string[]} args */
export async function runServe(args) {
  const service = await Service.open(parseServeOptions(args, process.env));
  const listening = await service.start();
  let stopping = false;
  const stop = async () => {
    // A second signal means "now".
    if (stopping) process.exit(1);
    stopping = true;
    await service.stop();
    process.exit(0);
  };
  process.on('SIGTERM', stop);
  process.on('SIGINT', stop);
  // Last: whoever reads this line may stop us at once.
  process.stdout.write(`${JSON.stringify({ event: 'listening', ...listening })}\n`);
}

/**
 * @param {string[]} args @param {Record<string, string|undefined>} env
 * @returns {import('../service.js').ServiceOptions}
 */
export function parseServeOptions(args, env) {
  const { values } = parseArgs({
    args,
    options: {
      data: { type: 'string' },
      host: { type: 'string', default: '127.0.0.1' },
      port: { type: 'string', default: '8787' },
      'public-url': { type: 'string' },
      'tls-cert': { type: 'string' },
      'tls-key': { type: 'string' },
      'owner-password-file': { type: 'string' },
      'max-upload-bytes': { type: 'string' },
      'max-duration-ms': { type: 'string' },
      transfer: { type: 'string' },
      'put-threshold': { type: 'string' },
      'chunk-size': { type: 'string' },
      'pairing-interval-ms': { type: 'string' },
      'pairing-lifetime-ms': { type: 'string' },
      'test-mode': { type: 'boolean', default: false },
      discard: { type: 'boolean', default: false },
      quiet: { type: 'boolean', default: false },
    },
  });
  if (!values.data) throw new UsageError('--data is required');
  if (Boolean(values['tls-cert']) !== Boolean(values['tls-key'])) {
    throw new UsageError('--tls-cert and --tls-key go together');
  }
  if (values.transfer !== undefined && !['auto', 'standard', 'tus'].includes(values.transfer)) {
    throw new UsageError('--transfer is auto, standard or tus');
  }
  const publicUrl = values['public-url'];
  if (publicUrl !== undefined && !/^https?:\/\/[^/]+\/?$/.test(publicUrl)) {
    throw new UsageError('--public-url is http(s)://HOST[:PORT], without a path');
  }
  const passwordFile = values['owner-password-file'];
  const ownerPassword =
    (passwordFile ? readFileSync(passwordFile, 'utf8').trim() : env.VANTRELL_OWNER_PASSWORD) || undefined;
  requireSafeExposure(values.host, publicUrl, ownerPassword, values['test-mode']);

  return {
    data: values.data,
    host: values.host,
    port: wholeNumber('--port', values.port) ?? 0,
    publicUrl,
    ...(values['tls-cert'] && values['tls-key'] ? { tls: { cert: values['tls-cert'], key: values['tls-key'] } } : {}),
    ownerPassword,
    testMode: values['test-mode'],
    discard: values.discard,
    quiet: values.quiet,
    config: given({
      maxVideoUploadBytes: wholeNumber('--max-upload-bytes', values['max-upload-bytes']),
      maxVideoDurationMs: wholeNumber('--max-duration-ms', values['max-duration-ms']),
      transfer: /** @type {any} */ (values.transfer),
      putThreshold: wholeNumber('--put-threshold', values['put-threshold']),
      chunkSize: wholeNumber('--chunk-size', values['chunk-size']),
    }),
    pairing: given({
      pollIntervalMs: wholeNumber('--pairing-interval-ms', values['pairing-interval-ms']),
      lifetimeMs: wholeNumber('--pairing-lifetime-ms', values['pairing-lifetime-ms']),
    }),
  };
}

/**
 * Beyond this machine a one-time address would pass through networks and proxies in the open: there a
 * password is asked for, and nothing is controlled from outside.
 *
 * @param {string} host @param {string|undefined} publicUrl @param {string|undefined} password @param {boolean} testMode
 */
function requireSafeExposure(host, publicUrl, password, testMode) {
  const isLocal = isLoopbackName(host) && (!publicUrl || isLoopbackName(new URL(publicUrl).hostname));
  if (isLocal) return;
  if (testMode) throw new UsageError('--test-mode works on loopback only');
  if (!password) throw new UsageError('beyond loopback an owner password is required');
  if (!publicUrl && ['0.0.0.0', '::'].includes(host)) {
    throw new UsageError('listening on every address needs --public-url');
  }
}

/** @param {string} option @param {string|undefined} text @returns {number|undefined} */
function wholeNumber(option, text) {
  if (text === undefined) return undefined;
  if (!/^\d{1,15}$/.test(text)) throw new UsageError(`${option} must be a whole number`);
  return Number(text);
}

/** Leaves out what was not given, so that it does not hide a default. @template {Record<string, unknown>} T @param {T} values */
function given(values) {
  return /** @type {{[K in keyof T]: Exclude<T[K], undefined>}} */ (
    Object.fromEntries(Object.entries(values).filter(([, value]) => value !== undefined))
  );
}
