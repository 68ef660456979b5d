// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { createHmac } from 'node:crypto';

import { sameText } from '../store/tokens.js';

/**
 * Signatures that let their holder do one thing until a moment: the parts that are signed say which
 * thing. Their text is "<expiry in ms>.<mac>".
 */
export class Signer {
  #secret;

  /** @param {string} secret */
  constructor(secret) {
    this.#secret = secret;
  }

  /** @param {string[]} parts @param {number} lifetimeMs */
  sign(parts, lifetimeMs) {
    const expires = Date.now() + lifetimeMs;
    return `${expires}.${this.mac([...parts, String(expires)])}`;
  }

  /** @param {string|undefined} signature @param {string[]} parts */
  verify(signature, parts) {
    const match = /^(\d{1,15})\.([\w-]+)$/.exec(signature ?? '');
    if (!match) return false;
    return sameText(match[2], this.mac([...parts, match[1]])) && Date.now() < Number(match[1]);
  }

  /** @param {string[]} parts none of which holds a line break */
  mac(parts) {
    return createHmac('sha256', this.#secret).update(parts.join('\n')).digest('base64url');
  }
}
