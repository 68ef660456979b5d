// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { optionalTextField, textField } from '../api/fields.js';
import { sendEmpty, sendJson } from '../http/answers.js';
import { readJson } from '../http/bodies.js';
import { HttpError } from '../http/httpError.js';

/** @typedef {import('../http/router.js').Exchange} Exchange */

/**
 * The control panel of test mode. It needs no key, which is why test mode exists on loopback only.
 *
 * @param {import('../http/router.js').Router} router
 * @param {import('../service.js').Service} service
 * @param {import('./traffic.js').Traffic} traffic
 */
export function addTestRoutes(router, service, traffic) {
  addTrafficRoutes(router, traffic);
  addDataRoutes(router, service);

  router.add('GET', '/test/config', ({ res }) => sendJson(res, 200, { ...service.config, ...service.pairing }));
  router.add('POST', '/test/config', async (exchange) => {
    const changes = await readJson(exchange);
    for (const [key, value] of Object.entries(changes)) {
      const target = [service.config, service.pairing].find((settings) => key in settings);
      if (!target) throw new HttpError(400, `${key} is not a setting`);
      Object.assign(target, { [key]: value });
    }
    sendJson(exchange.res, 200, { ...service.config, ...service.pairing });
  });
}

/** @param {import('../http/router.js').Router} router @param {import('./traffic.js').Traffic} traffic */
function addTrafficRoutes(router, traffic) {
  const { rules, log } = traffic;
  router.add('GET', '/test/faults', ({ res }) => sendJson(res, 200, { rules: rules.describe() }));
  router.add('POST', '/test/faults', async (exchange) => {
    rules.add((await readJson(exchange)).rules);
    sendJson(exchange.res, 200, { rules: rules.describe() });
  });
  router.add('DELETE', '/test/faults', ({ res }) => (rules.clear(), sendEmpty(res, 204)));

  const report = () => ({ connections: traffic.connections(), requests: log.entries() });
  router.add('GET', '/test/log', ({ res }) => sendJson(res, 200, report()));
  router.add('DELETE', '/test/log', ({ res }) => (log.clear(), sendEmpty(res, 204)));

  /** So that a test need not poll: answers when enough requests have come, or 408 when they do not. */
  router.add('GET', '/test/wait', async ({ res, url }) => {
    const query = url.searchParams;
    const method = query.get('method');
    const pattern = new RegExp(query.get('pathPattern') ?? '');
    const endedOnly = query.get('state') === 'ended';
    const arrived = await log.waitFor(
      (entry) =>
        (method === null || entry.method === method) && pattern.test(entry.path) && !(endedOnly && entry.endedMs === null),
      Number(query.get('count') ?? 1),
      Number(query.get('timeoutMs') ?? 10_000),
    );
    sendJson(res, arrived ? 200 : 408, report());
  });

  router.add('POST', '/test/connections/close', ({ req, res }) => {
    traffic.endConnections(req.socket);
    sendEmpty(res, 204);
  });
}

/** @param {import('../http/router.js').Router} router @param {import('../service.js').Service} service */
function addDataRoutes(router, { library }) {
  const accountFor = (/** @type {Record<string, unknown>} */ body) => {
    const name = optionalTextField(body, 'account', { max: 100 });
    return name === null ? library.accounts.owner() : library.accounts.named(name);
  };

  router.add('POST', '/test/projects', async (exchange) => {
    const body = await readJson(exchange);
    const name = textField(body, 'name', { max: 100 });
    sendJson(exchange.res, 201, { id: library.projects.create(accountFor(body), name), name });
  });
  router.add('DELETE', '/test/projects/:projectId', ({ res, params }) => {
    if (!library.projects.deleteAnyones(params.projectId)) throw new HttpError(404, 'No such project');
    sendEmpty(res, 204);
  });

  router.add('POST', '/test/keys', async (exchange) => {
    const body = await readJson(exchange);
    const accountId = accountFor(body);
    const name = optionalTextField(body, 'name', { max: 100 }) ?? 'Test key';
    sendJson(exchange.res, 201, { apiKey: library.keys.create(accountId, name), accountId });
  });
  router.add('POST', '/test/keys/revoke', async (exchange) => {
    const key = textField(await readJson(exchange), 'apiKey', { max: 200 });
    if (!library.keys.revokeByText(key)) throw new HttpError(404, 'No such live key');
    sendEmpty(exchange.res, 204);
  });

  const decide = (/** @type {'approved'|'denied'} */ decision) => (/** @type {Exchange} */ { res, params }) => {
    if (!library.pairings.decide(params.code, library.accounts.owner(), decision)) {
      throw new HttpError(409, 'There is nothing to decide about this code');
    }
    sendEmpty(res, 204);
  };
  router.add('POST', '/test/pairing/:code/approve', decide('approved'));
  router.add('POST', '/test/pairing/:code/deny', decide('denied'));
  router.add('POST', '/test/pairing/:code/expire', ({ res, params }) => {
    if (!library.pairings.expire(params.code)) throw new HttpError(404, 'No such code');
    sendEmpty(res, 204);
  });

  router.add('GET', '/test/events', ({ res }) => sendJson(res, 200, { events: library.events.list() }));
  router.add('DELETE', '/test/events', ({ res }) => (library.events.clear(), sendEmpty(res, 204)));
}
