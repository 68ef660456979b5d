// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { requireAccount } from '../api/authentication.js';
import { HttpError } from '../http/httpError.js';
import { BrowserSession } from './browserSession.js';

/** @typedef {import('../http/router.js').Exchange} Exchange */
/** @typedef {import('../service.js').Service} Service */

/** Thrown for a person who has to sign in first. */
export class SignInRequired extends HttpError {
  constructor() {
    super(401, 'Sign in to see this library');
  }
}

/**
 * The owner at a browser: one that signed in, with the password or a one-time address. Where a request comes
 * from proves nothing, it may have been through a proxy.
 *
 * @param {Service} service @param {Exchange} exchange
 * @returns {{accountId: string, session: BrowserSession}}
 */
export function requireOwner({ library, origin }, exchange) {
  const session = new BrowserSession(exchange, origin());
  if (!library.sessions.isLive(session.secret)) throw new SignInRequired();
  return { accountId: library.accounts.owner(), session };
}

/**
 * The account that a file or a listing is for: that of the API key when a program asks, otherwise the
 * owner's.
 *
 * @param {Service} service @param {Exchange} exchange
 * @returns {string}
 */
export function requireViewer(service, exchange) {
  if (exchange.req.headers.authorization !== undefined) return requireAccount(service.library, exchange.req);
  return requireOwner(service, exchange).accountId;
}

/** The capture that the path names, if its viewer may see it. @param {Service} service @param {Exchange} exchange */
export function viewedAsset(service, exchange) {
  const asset = service.library.assets.findOwned(requireViewer(service, exchange), exchange.params.assetId);
  if (!asset) throw new HttpError(404, 'Capture not found');
  return asset;
}
