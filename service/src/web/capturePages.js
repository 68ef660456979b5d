// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { redirect } from '../http/answers.js';
import { HttpError } from '../http/httpError.js';
import { captureTitle, duration, fileSize, moment } from './format.js';
import { readOwnForm, tokenField } from './forms.js';
import { html } from './html.js';
import { requireOwner } from './owner.js';
import { sendPage } from './page.js';
import { factsOf, layerOffset, otherLayer } from '../store/layers.js';

/** @typedef {import('../store/assets.js').AssetRow} AssetRow */

/**
 * The page of one capture.
 *
 * @param {import('../http/router.js').Router} router @param {import('../service.js').Service} service
 */
export function addCapturePages(router, service) {
  const { library, objects, removals, log } = service;

  router.add('GET', '/captures/:assetId', async (exchange) => {
    const { accountId, session } = requireOwner(service, exchange);
    const asset = library.assets.findOwned(accountId, exchange.params.assetId);
    if (!asset) throw new HttpError(404, 'There is no such capture in this library');
    const title = captureTitle(asset);
    const deletion = `/captures/${asset.id}/delete`;
    const other = asset.status === 'confirmed' ? otherLayer(library.assets, asset) : undefined;
    const isCamera = factsOf(asset).source === 'camera';
    const camera = isCamera ? undefined : other;
    const body = html`<article class="capture">
${asset.status === 'confirmed' ? stage(asset, camera, await objects.has(asset.id, 'thumb')) : stillUploading()}
<div class="columns">
<section>
<h1>${title}</h1>
<p class="quiet">${moment(asset.created_at)} · ${library.projects.find(accountId, asset.project_id)?.name}</p>
<dl class="facts-list">${facts(asset)}</dl>
${camera ? html`<label class="switch"><input type="checkbox" id="camera-shown" checked> Show the camera</label>` : ''}
<div class="actions">
${other ? html`<a class="button plain" href="/captures/${other.id}">${isCamera ? 'Watch with the screen' : 'Camera alone'}</a>` : ''}
${asset.status === 'confirmed' ? html`<a class="button" href="/captures/${asset.id}/main?download" download>Download</a>` : ''}
<details class="confirm"><summary class="button plain">Delete…</summary>
<form method="post" action="${deletion}">${tokenField(service, session, deletion)}
<p>This removes the capture from the library for good.</p>
<button class="danger">Delete capture</button></form></details>
</div>
</section>
${asset.kind === 'video' ? html`<section id="moments" class="moments" hidden><h2>Clicks and scrolls</h2><ol></ol></section>` : ''}
</div>
</article>`;
    sendPage(exchange.res, 200, { title, body, current: '/', scripts: asset.kind === 'video' ? ['player.js'] : [] });
  });

  router.add('POST', '/captures/:assetId/delete', async (exchange) => {
    const { accountId } = await readOwnForm(service, exchange);
    const asset = library.assets.findOwned(accountId, exchange.params.assetId);
    if (!asset) throw new HttpError(404, 'There is no such capture in this library');
    await removals.remove(asset);
    log.info(`deleted ${asset.id}`);
    redirect(exchange.res, '/');
  });
}

/** @param {AssetRow} asset @param {AssetRow|undefined} camera @param {boolean} hasThumb */
function stage(asset, camera, hasThumb) {
  const base = `/captures/${asset.id}`;
  if (asset.kind === 'image') {
    return html`<figure class="stage"><img src="${base}/main" alt="${captureTitle(asset)}"></figure>`;
  }
  return html`<figure class="stage" data-sidecar="${base}/meta">
<div class="player"><div class="screen"><video src="${base}/main" controls playsinline preload="metadata"${
    hasThumb ? html` poster="${base}/thumb"` : ''
  }></video><canvas aria-hidden="true"></canvas>${camera ? cameraLayer(asset, camera) : ''}</div>
<div class="track" hidden></div></div>
</figure>`;
}

/** @param {AssetRow} screen @param {AssetRow} camera */
function cameraLayer(screen, camera) {
  return html`<button class="camera" type="button" title="Move to another corner" hidden>
<video src="/captures/${camera.id}/main" muted playsinline preload="auto" tabindex="-1" data-offset="${layerOffset(
    screen,
    camera,
  )}"></video></button>`;
}

function stillUploading() {
  return html`<figure class="stage waiting"><p>This capture is still being uploaded.</p></figure>`;
}

/** @param {AssetRow} asset */
function facts(asset) {
  /** @type {import('../storage/sidecarFacts.js').SidecarFacts} */
  const { source, width, height, scale = 1, windowTitle, application, cursorInVideo } = factsOf(asset);
  const rows = [
    ['Length', asset.duration_ms === null ? undefined : duration(asset.duration_ms)],
    ['Size', fileSize(asset.bytes)],
    ['Picture', width && height && `${width} × ${height}${scale > 1 ? ` at ${scale}×` : ''}`],
    ['Source', source && { display: 'Whole display', region: 'Area', window: 'Window', camera: 'Camera' }[source]],
    ['Window', [windowTitle, application].filter(Boolean).join(' — ')],
    ['Pointer', cursorInVideo === undefined ? undefined : cursorInVideo ? 'In the picture' : 'As a layer'],
    ['SHA-256', asset.sha256 && html`<code>${asset.sha256}</code>`],
  ];
  return rows.filter(([, value]) => value).map(([name, value]) => html`<div><dt>${name}</dt><dd>${value}</dd></div>`);
}
