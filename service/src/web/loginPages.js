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

/** @typedef {import('../http/router.js').Exchange} Exchange */

const SIGN_IN_PATH = '/sign-in';

/**
 * A new address that makes the first browser that opens it the owner's.
 *
 * @param {import('../store/library.js').Library} library @param {string} origin
 * @param {string} [page] the path it leads to
 */
export async function signInAddress(library, origin, page = '/') {
  // The code is in the query, which is never logged.
  const query = new URLSearchParams({ code: await library.signInCodes.create(), ...(page === '/' ? {} : { next: page }) });
  return `${origin}${SIGN_IN_PATH}?${query}`;
}

/**
 * Signing in, by a one-time address or with the owner password.
 *
 * @param {import('../http/router.js').Router} router @param {import('../service.js').Service} service
 */
export function addLoginPages(router, service) {
  const { library, ownerPassword, origin, log } = service;

  // A new secret: whoever knew the one from before signing in must not be signed in too.
  const signIn = async (/** @type {BrowserSession} */ session) => session.replace(await library.sessions.create());

  router.add('GET', SIGN_IN_PATH, async (exchange) => {
    const session = new BrowserSession(exchange, origin());
    const query = exchange.url.searchParams;
    // A browser that is signed in may open it again, and keeps its session.
    if (!library.sessions.isLive(session.secret)) {
      // A HEAD is somebody's look at where a link leads.
      const isGood = exchange.req.method === 'GET' && (await library.signInCodes.redeem(query.get('code') ?? ''));
      if (!isGood) throw new HttpError(403, 'This address was used already or is out of date.');
      await signIn(session);
    }
    redirect(exchange.res, localPath(query.get('next')));
  });

  router.add('POST', '/logout', async (exchange) => {
    const { session } = await readOwnForm(service, exchange);
    await library.sessions.end(session.secret);
    redirect(exchange.res, '/login');
  });

  if (ownerPassword === undefined) {
    router.add('GET', '/login', ({ res }) => sendPage(res, 200, { title: 'Sign in', body: howToSignIn(), bare: true }));
    return;
  }
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
    await signIn(session);
    redirect(exchange.res, next);
  });

  /** @type {(exchange: Exchange, session: BrowserSession, next: string, wrong: boolean) => void} */
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

function howToSignIn() {
  return html`<section class="question">
<h1>Sign in</h1>
<p>Open the address that the service printed when it started. It works once, in one browser; another is printed by</p>
<p><code>vantrell-service sign-in --data DIR</code></p>
</section>`;
}

/** Where to go after signing in: a place of ours, whatever the link said. @param {string|null} next */
function localPath(next) {
  return next !== null && /^\/(?![/\\])/.test(next) ? next : '/';
}
