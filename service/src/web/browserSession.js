// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { newSecret, sameText } from '../store/tokens.js';

const COOKIE_LIFETIME_S = 30 * 24 * 3600;

/** A cookie that tells one browser from others. Forms are bound to it; it is also the proof of having signed in. */
export class BrowserSession {
  #exchange;
  #secure;
  #cookieName;

  /** @param {import('../http/router.js').Exchange} exchange @param {string} origin */
  constructor(exchange, origin) {
    const { protocol, port } = new URL(origin);
    this.#exchange = exchange;
    this.#secure = protocol === 'https:';
    // Cookies do not tell ports apart; two libraries on one machine must not take each other's.
    this.#cookieName = `vantrell_session_${port || 'default'}`;
    const found = cookies(exchange.req.headers.cookie).get(this.#cookieName);
    /** @type {string} */
    this.secret = found ?? '';
    if (!found) this.replace(newSecret());
  }

  /** @param {string} secret */
  replace(secret) {
    this.secret = secret;
    const attributes = ['Path=/', 'HttpOnly', 'SameSite=Lax', `Max-Age=${COOKIE_LIFETIME_S}`];
    if (this.#secure) attributes.push('Secure');
    this.#exchange.res.setHeader('Set-Cookie', `${this.#cookieName}=${secret}; ${attributes.join('; ')}`);
  }

  /**
   * The token that a form of this browser carries for one action.
   *
   * @param {import('../storage/signer.js').Signer} signer @param {string} action the path it posts to
   */
  formToken(signer, action) {
    return signer.mac(['form', this.secret, action]);
  }

  /** @param {import('../storage/signer.js').Signer} signer @param {string} action @param {string} token */
  isFormToken(signer, action, token) {
    return sameText(token, this.formToken(signer, action));
  }
}

/** @param {string|undefined} header @returns {Map<string, string>} */
function cookies(header) {
  const pairs = (header ?? '').split(';').map((pair) => pair.trim().split('='));
  return new Map(pairs.filter(([name, value]) => name && value).map(([name, value]) => [name, value]));
}
