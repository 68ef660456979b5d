// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { HttpError } from './httpError.js';

const LOOPBACK_NAMES = ['127.0.0.1', 'localhost', '[::1]'];

/** @param {string} hostname as in a URL, IPv6 in brackets or bare */
export function isLoopbackName(hostname) {
  const bare = hostname.replace(/^\[|\]$/g, '');
  return bare === 'localhost' || bare === '::1' || /^127\.\d+\.\d+\.\d+$/.test(bare);
}

/**
 * Refuses requests addressed to a name that is not ours. A page of a stranger whose name resolves to
 * this machine would otherwise count as same-origin and could read the library ("DNS rebinding").
 */
export class HostGuard {
  #allowed;

  /** @param {URL} origin where people reach the library */
  constructor(origin) {
    this.#allowed = new Set([origin.host]);
  }

  /** Also answers to this machine's own names. @param {number} port */
  allowLoopbackPort(port) {
    for (const name of LOOPBACK_NAMES) this.#allowed.add(`${name}:${port}`);
  }

  /** @param {import('node:http').IncomingMessage} req */
  check(req) {
    if (!this.#allowed.has((req.headers.host ?? '').toLowerCase())) {
      throw new HttpError(421, 'This address does not belong to this library');
    }
  }
}
