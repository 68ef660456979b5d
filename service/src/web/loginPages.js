// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { redirect } from '../http/answers.js';
import { HttpError } from '../http/httpError.js';
import { sameText } from '../store/tokens.js';
import { AttemptLimit } from './attemptLimit.js';
import { BrowserSession } from './browserSession.js';
import { readOwnForm, readTrustedForm, tokenField } from './forms.js';
import { html } from './html.js';
import { sendPage } from './page.js';

/**
 * Signing in, for libraries with an owner password.
 *
 * @param {import('../http/router.js').Router} router @param {import('../service.js').Service} service
 */
export function addLoginPages(router, service) {
  const { library, ownerPassword, origin, log } = service;
  if (ownerPassword === undefined) return;
  const limit = new AttemptLimit();

  router.add('GET', '/login', (exchange) => {
    const session = new BrowserSession(exchange, origin());
    showForm(exchange, session, localPath(exchange.url.searchParams.get('next')), false);
  });

  router.add('POST', '/login', async (exchange) => {
    const session = new BrowserSession(exchange, origin());
    const form = await readTrustedForm(service, exchange, session);
    const next = localPath(form.get('next'));
    const address = exchange.req.socket.remoteAddress ?? '';
    if (!limit.allows(address)) {
      throw new HttpError(429, 'Too many wrong passwords. Wait a minute and try again.', { headers: { 'Retry-After': '60' } });
    }
    if (!sameText(form.get('password') ?? '', ownerPassword)) {
      limit.countFailure(address);
      log.error(`wrong owner password from ${address}`);
      showForm(exchange, session, next, true);
      return;
    }
    // A new secret: whoever knew the one from before signing in must not be signed in too.
    session.replace(library.sessions.create());
    redirect(exchange.res, next);
  });

  router.add('POST', '/logout', async (exchange) => {
    const { session } = await readOwnForm(service, exchange);
    library.sessions.end(session.secret);
    redirect(exchange.res, '/login');
  });

  /** @type {(exchange: import('../http/router.js').Exchange, session: BrowserSession, next: string, wrong: boolean) => void} */
  const showForm = (exchange, session, next, wrong) => {
    const body = html`<section class="question">
<h1>Sign in</h1>
<form class="stack" method="post" action="/login">${tokenField(service, session, '/login')}
<input type="hidden" name="next" value="${next}">
<label for="password">Owner password</label>
<input id="password" name="password" type="password" autocomplete="current-password" required autofocus>
${wrong ? html`<p class="wrong" role="alert">That is not the password.</p>` : ''}
<button class="primary">Sign in</button></form>
</section>`;
    sendPage(exchange.res, wrong ? 403 : 200, { title: 'Sign in', body, bare: true });
  };
}

/** Where to go after signing in: a place of ours, whatever the link said. @param {string|null} next */
function localPath(next) {
  return next !== null && /^\/(?![/\\])/.test(next) ? next : '/';
}
