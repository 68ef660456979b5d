// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { displayName, textField } from '../api/fields.js';
import { sendJson } from '../http/answers.js';
import { readJson } from '../http/bodies.js';
import { HttpError } from '../http/httpError.js';

const FALLBACK_NAME = 'Unnamed device';

/**
 * The device's side of pairing. These requests carry no key: getting one is what they are for.
 *
 * @param {import('../http/router.js').Router} router @param {import('../service.js').Service} service
 */
export function addPairingRoutes(router, { library, pairing, origin, log }) {
  router.add('POST', '/v1/keys/request', async (exchange) => {
    const body = await readJson(exchange);
    const name = displayName(textField(body, 'name', { max: 100 })) || FALLBACK_NAME;
    const made = await library.pairings.request(name, exchange.req.socket.remoteAddress ?? 'unknown');
    if (!made) throw new HttpError(429, 'Too many devices are waiting for approval', { headers: { 'Retry-After': '60' } });
    log.info(`pairing ${made.publicCode} requested`);
    sendJson(exchange.res, 201, {
      deviceCode: made.deviceCode,
      approvalUrl: `${origin()}/pair/${made.publicCode}`,
      pollIntervalSeconds: Math.ceil(pairing.pollIntervalMs / 1000),
      expiresInSeconds: Math.floor(pairing.lifetimeMs / 1000),
    });
  });

  router.add('POST', '/v1/keys/poll', async (exchange) => {
    const body = await readJson(exchange);
    sendJson(exchange.res, 200, await library.pairings.poll(textField(body, 'deviceCode', { max: 200 })));
  });
}
