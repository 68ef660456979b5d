// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { displayName, invalid, textField } from '../api/fields.js';
import { redirect } from '../http/answers.js';
import { readOwnForm, tokenField } from './forms.js';
import { html } from './html.js';
import { requireOwner } from './owner.js';
import { sendPage } from './page.js';

/** @param {import('../http/router.js').Router} router @param {import('../service.js').Service} service */
export function addProjectPages(router, service) {
  const { library } = service;

  router.add('GET', '/projects', (exchange) => {
    const { accountId, session } = requireOwner(service, exchange);
    const rows = library.projects.list(accountId).map(({ id, name }) => {
      const count = library.assets.count(accountId, 'confirmed', id);
      return html`<li><a href="/?project=${encodeURIComponent(id)}">${name}</a>
<span class="quiet">${count === 1 ? '1 capture' : `${count} captures`}</span></li>`;
    });
    const body = html`<div class="narrow">
<div class="heading"><h1>Projects</h1><p class="quiet">Where captures go. Choose one in the menu of Vantrell Capture.</p></div>
<ul class="rows">${rows}</ul>
<form class="inline" method="post" action="/projects">${tokenField(service, session, '/projects')}
<label for="name">New project</label>
<input id="name" name="name" required maxlength="100" autocomplete="off" placeholder="Name">
<button>Create</button></form>
</div>`;
    sendPage(exchange.res, 200, { title: 'Projects', body, current: '/projects' });
  });

  router.add('POST', '/projects', async (exchange) => {
    const { form, accountId } = await readOwnForm(service, exchange);
    const name = displayName(textField({ name: form.get('name') ?? '' }, 'name', { max: 100 }));
    if (!name) throw invalid('name', 'must not be blank');
    await library.projects.create(accountId, name);
    redirect(exchange.res, '/projects');
  });
}
