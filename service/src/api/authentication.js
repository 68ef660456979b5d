// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { HttpError } from '../http/httpError.js';

/** Applications disconnect when they read exactly this. */
const REVOKED = 'Invalid or revoked API key';

/**
 * The account whose key the request carries.
 *
 * @param {import('../store/library.js').Library} library @param {import('node:http').IncomingMessage} req
 * @returns {string}
 */
export function requireAccount(library, req) {
  const header = req.headers.authorization;
  if (header === undefined) throw new HttpError(401, 'An API key is required');
  const key = /^Bearer +(\S+)$/i.exec(header)?.[1];
  const row = key && library.keys.authenticate(key);
  if (!row) throw new HttpError(401, REVOKED);
  return row.account_id;
}
