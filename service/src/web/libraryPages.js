// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { redirect } from '../http/answers.js';
import { HttpError } from '../http/httpError.js';
import { captureTitle, duration, fileSize, moment } from './format.js';
import { html } from './html.js';
import { requireOwner } from './owner.js';
import { sendPage } from './page.js';

const PER_PAGE = 60;

/** @typedef {import('../store/assets.js').AssetRow} AssetRow */

/**
 * The list of captures.
 *
 * @param {import('../http/router.js').Router} router @param {import('../service.js').Service} service
 */
export function addLibraryPages(router, service) {
  const { library, objects } = service;

  router.add('GET', '/', async (exchange) => {
    const { accountId } = requireOwner(service, exchange);
    const query = exchange.url.searchParams;
    const projectId = query.get('project') ?? '';
    const page = Math.max(1, Math.floor(Number(query.get('page') ?? 1)) || 1);
    const chosen = projectId ? library.projects.find(accountId, projectId) : undefined;
    if (projectId && !chosen) throw new HttpError(404, 'Project not found');

    const total = library.assets.count(accountId, 'confirmed', projectId);
    const pending = library.assets.count(accountId, 'pending', projectId);
    const assets = library.assets.list(accountId, {
      projectId, status: 'confirmed', limit: PER_PAGE, offset: (page - 1) * PER_PAGE,
    });
    const cards = await Promise.all(
      assets.map(async (asset) =>
        card(asset, {
          hasThumb: await objects.has(asset.id, 'thumb'),
          project: library.projects.find(accountId, asset.project_id)?.name ?? '',
        }),
      ),
    );
    const body = html`<div class="heading">
<h1>${chosen ? chosen.name : 'Captures'}</h1>
${summary(total, pending)}
</div>
${filters(library.projects.list(accountId), projectId)}
${total === 0 ? emptyLibrary() : html`<ul class="grid">${cards}</ul>`}
${pager(page, Math.ceil(total / PER_PAGE), projectId)}`;
    sendPage(exchange.res, 200, { title: chosen?.name ?? 'Captures', body, current: '/' });
  });

  // Applications open this with the project a capture went to.
  router.add('GET', '/editor/:id', (exchange) => {
    const { accountId } = requireOwner(service, exchange);
    const { id } = exchange.params;
    if (library.projects.find(accountId, id)) redirect(exchange.res, `/?project=${encodeURIComponent(id)}`);
    else if (library.assets.findOwned(accountId, id)) redirect(exchange.res, `/captures/${id}`);
    else throw new HttpError(404, 'There is no such project in this library');
  });
}

/** @param {AssetRow} asset @param {{hasThumb: boolean, project: string}} more */
function card(asset, { hasThumb, project }) {
  const title = captureTitle(asset);
  const picture = hasThumb
    ? html`<img src="/captures/${asset.id}/thumb" alt="" loading="lazy">`
    : asset.kind === 'image'
      ? html`<img src="/captures/${asset.id}/main" alt="" loading="lazy">`
      : html`<span class="blank" aria-hidden="true"></span>`;
  const length = asset.kind === 'video' && asset.duration_ms !== null;
  return html`<li><a class="card" href="/captures/${asset.id}">
<span class="picture">${picture}${length ? html`<span class="length">${duration(asset.duration_ms ?? 0)}</span>` : ''}</span>
<span class="name" title="${title}">${title}</span>
<span class="facts">${moment(asset.created_at)} · ${fileSize(asset.bytes)}</span>
<span class="facts project">${project}</span>
</a></li>`;
}

/** @param {{id: string, name: string}[]} projects @param {string} current */
function filters(projects, current) {
  if (projects.length < 2) return '';
  const chip = (/** @type {string} */ href, /** @type {string} */ name, /** @type {boolean} */ on) =>
    html`<a class="chip" href="${href}"${on ? html` aria-current="true"` : ''}>${name}</a>`;
  return html`<nav class="chips" aria-label="Projects">${chip('/', 'All', current === '')}${projects.map(({ id, name }) =>
    chip(`/?project=${encodeURIComponent(id)}`, name, id === current),
  )}</nav>`;
}

function emptyLibrary() {
  return html`<section class="empty">
<img src="/static/mark.svg" alt="" width="56" height="56">
<h2>Nothing captured yet</h2>
<p>Open Vantrell Capture, choose <b>Connect</b> from its menu, and approve the connection here.
Recordings and screenshots then appear on this page.</p>
</section>`;
}

/** @param {number} total @param {number} pending */
function summary(total, pending) {
  const parts = [];
  if (total > 0) parts.push(total === 1 ? '1 capture' : `${total} captures`);
  if (pending > 0) parts.push(`${pending} still uploading`);
  return parts.length > 0 ? html`<p class="quiet">${parts.join(' · ')}</p>` : '';
}

/** @param {number} page @param {number} pages @param {string} projectId */
function pager(page, pages, projectId) {
  if (pages < 2) return '';
  const href = (/** @type {number} */ to) =>
    `/?${new URLSearchParams({ ...(projectId ? { project: projectId } : {}), page: String(to) })}`;
  return html`<nav class="pager" aria-label="Pages">
${page > 1 ? html`<a class="button" href="${href(page - 1)}">Newer</a>` : ''}
<span class="quiet">Page ${page} of ${pages}</span>
${page < pages ? html`<a class="button" href="${href(page + 1)}">Older</a>` : ''}
</nav>`;
}
