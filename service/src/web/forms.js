// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { readForm } from '../http/bodies.js';
import { HttpError } from '../http/httpError.js';
import { html } from './html.js';
import { requireOwner } from './owner.js';

/** @typedef {import('../http/router.js').Exchange} Exchange */
/** @typedef {import('../service.js').Service} Service */
/** @typedef {import('./browserSession.js').BrowserSession} BrowserSession */

const TOKEN_FIELD = 'token';

/** The hidden field that every form needs. @param {Service} service @param {BrowserSession} session @param {string} action */
export function tokenField({ signer }, session, action) {
  return html`<input type="hidden" name="${TOKEN_FIELD}" value="${session.formToken(signer, action)}">`;
}

/**
 * Reads a form that was sent from one of our own pages to this browser's owner. A page of somebody
 * else can make a browser send a form too, but neither with our origin nor with the token.
 *
 * @param {Service} service @param {Exchange} exchange
 * @returns {Promise<{form: URLSearchParams, accountId: string, session: BrowserSession}>}
 */
export async function readOwnForm(service, exchange) {
  const { accountId, session } = requireOwner(service, exchange);
  return { form: await readTrustedForm(service, exchange, session), accountId, session };
}

/**
 * @param {Service} service @param {Exchange} exchange @param {BrowserSession} session
 * @returns {Promise<URLSearchParams>}
 */
export async function readTrustedForm({ signer }, exchange, session) {
  requireSameOrigin(exchange.req);
  const form = await readForm(exchange);
  if (!session.isFormToken(signer, exchange.url.pathname, form.get(TOKEN_FIELD) ?? '')) {
    throw new HttpError(403, 'This form is out of date. Go back, reload the page and try again.');
  }
  return form;
}

/** @param {import('node:http').IncomingMessage} req whose Host has been checked */
function requireSameOrigin(req) {
  const origin = req.headers.origin ?? '';
  if (!URL.canParse(origin) || new URL(origin).host !== req.headers.host) {
    throw new HttpError(403, 'This form did not come from this library');
  }
}
