// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { sendJson } from '../http/answers.js';
import { readJson } from '../http/bodies.js';
import { HttpError } from '../http/httpError.js';
import { requireRoomFor } from '../storage/diskRoom.js';
import { requireAccount } from './authentication.js';
import { parseEvents } from './eventsRequest.js';
import { parseSignRequest, requireWithinPlan } from './signRequest.js';
import { signedCapture } from './signedCapture.js';

/** @typedef {import('../store/assets.js').AssetRow} AssetRow */

const projectGone = () => new HttpError(404, 'Project not found');
const alreadyUploaded = (/** @type {string} */ assetId) =>
  new HttpError(409, 'Capture already uploaded', { body: { assetId } });

/**
 * What the applications talk to.
 *
 * @param {import('../http/router.js').Router} router @param {import('../service.js').Service} service
 */
export function addCaptureRoutes(router, service) {
  const { library, config, objects, captureLocks, findings, log } = service;

  /** The caller's capture; another account's does not exist for it. @returns {AssetRow} */
  const ownedAsset = (/** @type {import('../http/router.js').Exchange} */ { req, params }) => {
    const asset = library.assets.findOwned(requireAccount(library, req), params.assetId);
    if (!asset) throw new HttpError(404, 'Capture not found');
    return asset;
  };

  router.add('GET', '/v1/capture/projects', ({ req, res }) => {
    const projects = library.projects.list(requireAccount(library, req));
    sendJson(res, 200, { projects: projects.map(({ id, name }) => ({ id, name })) });
  });

  router.add('GET', '/v1/capture/limits', ({ req, res }) => {
    requireAccount(library, req);
    const { plan, maxVideoDurationMs, maxVideoUploadBytes } = config;
    sendJson(res, 200, { plan, maxVideoDurationMs, ...(maxVideoUploadBytes === null ? {} : { maxVideoUploadBytes }) });
  });

  router.add('POST', '/v1/capture/sign', async (exchange) => {
    const accountId = requireAccount(library, exchange.req);
    const facts = parseSignRequest(await readJson(exchange));
    const before = library.assets.findByCapture(accountId, facts.captureId);
    if (before?.status === 'confirmed') throw alreadyUploaded(before.id);
    if (!library.projects.findLive(accountId, facts.projectId)) throw projectGone();
    requireWithinPlan(facts, config);
    if (service.storesBytes) await requireRoomFor(library.dir.root, facts.bytes);
    const asset = await captureLocks.run(accountId, facts.captureId, async () => {
      const { asset, isResized } = await library.assets.register(accountId, facts);
      // What was sent of a file of another size is of no use to this one.
      if (isResized) await objects.discardUploads(asset.id);
      return asset;
    });
    // Confirmed by another request while this one waited.
    if (asset.status === 'confirmed') throw alreadyUploaded(asset.id);
    sendJson(exchange.res, 200, signedCapture(service, asset));
  });

  router.add('POST', '/v1/capture/:assetId/refresh', (exchange) => {
    const asset = ownedAsset(exchange);
    if (asset.status === 'confirmed') throw alreadyUploaded(asset.id);
    if (!library.projects.findLive(asset.account_id, asset.project_id)) throw projectGone();
    sendJson(exchange.res, 200, signedCapture(service, asset));
  });

  router.add('POST', '/v1/capture/:assetId/confirm', async (exchange) => {
    const { account_id: accountId, capture_id: captureId } = ownedAsset(exchange);
    const { asset, isNew } = await captureLocks.run(accountId, captureId, async () => {
      const asset = ownedAsset(exchange);
      if (asset.status === 'confirmed') return { asset, isNew: false };
      if (!library.projects.findLive(accountId, asset.project_id)) throw projectGone();
      if (!(await objects.settleMain(asset))) throw new HttpError(404, 'The capture has not been uploaded completely');
      await library.assets.markConfirmed(asset.id);
      await objects.discardUploads(asset.id);
      log.info(`confirmed ${asset.id}`);
      return { asset, isNew: true };
    });
    if (isNew && service.storesBytes) await findings.gather(asset.id, config.checksumWaitMs);
    sendJson(exchange.res, 200, { assetId: asset.id, projectId: asset.project_id, status: 'confirmed' });
  });

  router.add('POST', '/v1/capture/events', async (exchange) => {
    const accountId = requireAccount(library, exchange.req);
    const events = parseEvents(await readJson(exchange));
    await library.events.add(accountId, events);
    sendJson(exchange.res, 200, { accepted: events.length });
  });
}
