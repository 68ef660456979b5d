// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { requireAccount } from '../api/authentication.js';
import { HttpError } from '../http/httpError.js';
import { BrowserSession } from './browserSession.js';

/** @typedef {import('../http/router.js').Exchange} Exchange */
/** @typedef {import('../service.js').Service} Service */

/** What a reverse proxy adds. Requests that came through one are not from this machine's own browser. */
const PROXY_HEADERS = ['forwarded', 'x-forwarded-for', 'x-forwarded-host', 'x-real-ip'];

/** Thrown for a person who has to sign in first. */
export class SignInRequired extends HttpError {
  constructor() {
    super(401, 'Sign in to see this library');
  }
}

/**
 * The owner at a browser: whoever knows the password, or, where none is set, whoever sits at this
 * machine.
 *
 * @param {Service} service @param {Exchange} exchange
 * @returns {{accountId: string, session: BrowserSession}}
 */
export function requireOwner({ library, ownerPassword, origin }, exchange) {
  const session = new BrowserSession(exchange, origin());
  if (ownerPassword === undefined) {
    if (PROXY_HEADERS.some((name) => exchange.req.headers[name] !== undefined)) {
      throw new HttpError(403, 'Set an owner password to use this library through a proxy');
    }
  } else if (!library.sessions.isLive(session.secret)) {
    throw new SignInRequired();
  }
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
