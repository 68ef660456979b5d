// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { redirect } from '../http/answers.js';
import { moment } from './format.js';
import { readOwnForm, tokenField } from './forms.js';
import { html } from './html.js';
import { requireOwner } from './owner.js';
import { sendPage } from './page.js';

/**
 * Connected devices, and how to part with one.
 *
 * @param {import('../http/router.js').Router} router @param {import('../service.js').Service} service
 */
export function addDevicePages(router, service) {
  const { library, log } = service;

  router.add('GET', '/devices', (exchange) => {
    const { accountId, session } = requireOwner(service, exchange);
    const rows = library.keys.list(accountId).map((key) => {
      const action = `/devices/${key.id}/revoke`;
      return html`<li><div><b>${key.name}</b><span class="quiet">Connected ${moment(key.created_at)} · ${
        key.last_used_at === null ? 'never used' : html`last used ${moment(key.last_used_at)}`
      }</span></div>
<form method="post" action="${action}">${tokenField(service, session, action)}<button class="plain">Disconnect</button></form></li>`;
    });
    const body = html`<div class="narrow">
<div class="heading"><h1>Connected devices</h1><p class="quiet">Each can add captures to this library until you disconnect it.</p></div>
${rows.length > 0 ? html`<ul class="rows">${rows}</ul>` : html`<p class="empty-line">No device is connected.</p>`}
<form class="inline" method="post" action="/logout">${tokenField(service, session, '/logout')}
<button class="plain">Sign out of this browser</button></form>
</div>`;
    sendPage(exchange.res, 200, { title: 'Connected devices', body, current: '/devices' });
  });

  router.add('POST', '/devices/:keyId/revoke', async (exchange) => {
    const { accountId } = await readOwnForm(service, exchange);
    if (await library.keys.revoke(accountId, exchange.params.keyId)) log.info(`revoked ${exchange.params.keyId}`);
    redirect(exchange.res, '/devices');
  });
}
