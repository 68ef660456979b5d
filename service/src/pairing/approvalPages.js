// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { redirect } from '../http/answers.js';
import { HttpError } from '../http/httpError.js';
import { Pairings } from '../store/pairings.js';
import { moment } from '../web/format.js';
import { readOwnForm, tokenField } from '../web/forms.js';
import { html } from '../web/html.js';
import { requireOwner } from '../web/owner.js';
import { sendPage } from '../web/page.js';

/** Addresses that tell nothing: the device's is there, or that of a proxy before us. */
const LOCAL_ADDRESSES = new Set(['127.0.0.1', '::1', '::ffff:127.0.0.1']);

/** How a decided pairing reads. */
const ENDINGS = {
  approved: ['Connected', 'You can close this page and go back to Vantrell Capture.'],
  claimed: ['Connected', 'You can close this page and go back to Vantrell Capture.'],
  denied: ['Not connected', 'The request was denied. The device has no access to this library.'],
  expired: ['This request has expired', 'Start the connection again from the menu of Vantrell Capture.'],
};

/**
 * The owner's side of pairing: one page, one question.
 *
 * @param {import('../http/router.js').Router} router @param {import('../service.js').Service} service
 */
export function addApprovalPages(router, service) {
  const { library, log } = service;

  const requirePairing = (/** @type {string} */ code) => {
    const pairing = library.pairings.find(code.toUpperCase());
    if (!pairing) throw new HttpError(404, 'This link does not belong to a device that wants to connect.');
    return pairing;
  };

  router.add('GET', '/pair/:code', (exchange) => {
    const { session } = requireOwner(service, exchange);
    const pairing = requirePairing(exchange.params.code);
    const state = Pairings.stateOf(pairing);
    const body = state === 'pending' ? question(service, session, pairing) : ending(state, pairing);
    sendPage(exchange.res, 200, { title: 'Connect a device', body, bare: true });
  });

  router.add('POST', '/pair/:code', async (exchange) => {
    const { form, accountId } = await readOwnForm(service, exchange);
    const { public_code: code } = requirePairing(exchange.params.code);
    const decision = form.get('decision');
    if (decision !== 'approved' && decision !== 'denied') throw new HttpError(400, 'Choose to approve or to deny.');
    if (await library.pairings.decide(code, accountId, decision)) log.info(`pairing ${code} ${decision}`);
    redirect(exchange.res, `/pair/${code}`);
  });
}

/**
 * @param {import('../service.js').Service} service @param {import('../web/browserSession.js').BrowserSession} session
 * @param {import('../store/pairings.js').PairingRow} pairing
 */
function question(service, session, pairing) {
  const action = `/pair/${pairing.public_code}`;
  const from = LOCAL_ADDRESSES.has(pairing.remote_address) ? '' : `from ${pairing.remote_address}, `;
  return html`<section class="question">
<h1>Connect this device?</h1>
<div class="device"><b>${pairing.device_name}</b><span class="quiet">${from}${moment(pairing.created_at)}</span>
<code class="code">${pairing.public_code}</code></div>
<p>It will be able to add captures to this library and see your projects. Approve only if you have just chosen
<b>Connect</b> in Vantrell Capture yourself.</p>
<form class="choice" method="post" action="${action}">${tokenField(service, session, action)}
<button name="decision" value="approved" class="primary">Approve</button>
<button name="decision" value="denied">Deny</button></form>
</section>`;
}

/** @param {keyof ENDINGS} state @param {import('../store/pairings.js').PairingRow} pairing */
function ending(state, pairing) {
  const [headline, sentence] = ENDINGS[state];
  return html`<section class="question ${state}">
<h1>${headline}</h1>
<div class="device"><b>${pairing.device_name}</b><code class="code">${pairing.public_code}</code></div>
<p>${sentence}</p>
<p><a href="/devices">Connected devices</a></p>
</section>`;
}
