// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { redirect } from '../http/answers.js';
import { html } from './html.js';
import { SignInRequired } from './owner.js';
import { sendPage } from './page.js';

const HEADLINES = new Map([
  [403, 'Not allowed'],
  [404, 'Not here'],
  [405, 'Not here'],
  [429, 'One moment'],
]);

/**
 * A failure, for somebody at a browser.
 *
 * @param {import('node:http').IncomingMessage} req @param {import('node:http').ServerResponse} res
 * @param {import('../http/httpError.js').HttpError} failure
 */
export function sendFailurePage(req, res, failure) {
  if (failure instanceof SignInRequired) {
    redirect(res, `/login?next=${encodeURIComponent(req.url ?? '/')}`);
    return;
  }
  const title = HEADLINES.get(failure.status) ?? 'That did not work';
  const body = html`<section class="question">
<h1>${title}</h1>
<p>${failure.message}</p>
<p><a class="button" href="/">To the library</a></p>
</section>`;
  sendPage(res, failure.status, { title, body, bare: true }, failure.headers);
}
