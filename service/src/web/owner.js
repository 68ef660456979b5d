// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { requireAccount } from '../api/authentication.js';
import { HttpError } from '../http/httpError.js';

/** What a reverse proxy adds. Requests that came through one are not from this machine's own browser. */
const PROXY_HEADERS = ['forwarded', 'x-forwarded-for', 'x-forwarded-host', 'x-real-ip'];

/**
 * The account that a page or file is shown for: that of the API key when a program asks, otherwise the
 * owner at this machine's own browser.
 *
 * @param {import('../service.js').Service} service @param {import('../http/router.js').Exchange} exchange
 * @returns {string}
 */
export function requireViewer({ library }, { req }) {
  if (req.headers.authorization !== undefined) return requireAccount(library, req);
  if (PROXY_HEADERS.some((name) => req.headers[name] !== undefined)) {
    throw new HttpError(403, 'Set an owner password to use the library through a proxy');
  }
  return library.accounts.owner();
}
