// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { optionalTextField, textField } from '../api/fields.js';
import { sendEmpty, sendJson } from '../http/answers.js';
import { readJson } from '../http/bodies.js';
import { HttpError } from '../http/httpError.js';
import { sameText } from '../store/tokens.js';

/** @typedef {import('../http/router.js').Exchange} Exchange */
/** @typedef {{add: (method: string, pattern: string, handler: import('../http/router.js').Handler) => unknown}} Routes */

/**
 * The control panel of test mode. It hands out keys, so it has one of its own, known only to whoever
 * started the service: an address proves nothing, it may be that of a proxy.
 *
 * @param {import('../http/router.js').Router} allRoutes
 * @param {import('../service.js').Service} service
 * @param {import('./traffic.js').Traffic} traffic
 * @param {string} controlKey
 */
export function addTestRoutes(allRoutes, service, traffic, controlKey) {
  /** @type {Routes} */
  const router = {
    add: (method, pattern, handler) =>
      allRoutes.add(method, pattern, (exchange) => {
        if (!sameText(String(exchange.req.headers['x-control-key'] ?? ''), controlKey)) {
          throw new HttpError(403, 'The header x-control-key must hold what the service printed at its start');
        }
        return handler(exchange);
      }),
  };
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

/** @param {Routes} router @param {import('./traffic.js').Traffic} traffic */
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

/** @param {Routes} router @param {import('../service.js').Service} service */
function addDataRoutes(router, { library }) {
  const accountFor = async (/** @type {Record<string, unknown>} */ body) => {
    const name = optionalTextField(body, 'account', { max: 100 });
    return name === null ? library.accounts.owner() : library.accounts.named(name);
  };

  router.add('POST', '/test/projects', async (exchange) => {
    const body = await readJson(exchange);
    const name = textField(body, 'name', { max: 100 });
    sendJson(exchange.res, 201, { id: await library.projects.create(await accountFor(body), name), name });
  });
  router.add('DELETE', '/test/projects/:projectId', async ({ res, params }) => {
    if (!(await library.projects.deleteAnyones(params.projectId))) throw new HttpError(404, 'No such project');
    sendEmpty(res, 204);
  });

  router.add('POST', '/test/keys', async (exchange) => {
    const body = await readJson(exchange);
    const accountId = await accountFor(body);
    const name = optionalTextField(body, 'name', { max: 100 }) ?? 'Test key';
    sendJson(exchange.res, 201, { apiKey: await library.keys.create(accountId, name), accountId });
  });
  router.add('POST', '/test/keys/revoke', async (exchange) => {
    const key = textField(await readJson(exchange), 'apiKey', { max: 200 });
    if (!(await library.keys.revokeByText(key))) throw new HttpError(404, 'No such live key');
    sendEmpty(exchange.res, 204);
  });

  const decide = (/** @type {'approved'|'denied'} */ decision) => async (/** @type {Exchange} */ { res, params }) => {
    if (!(await library.pairings.decide(params.code, library.accounts.owner(), decision))) {
      throw new HttpError(409, 'There is nothing to decide about this code');
    }
    sendEmpty(res, 204);
  };
  router.add('POST', '/test/pairing/:code/approve', decide('approved'));
  router.add('POST', '/test/pairing/:code/deny', decide('denied'));
  router.add('POST', '/test/pairing/:code/expire', async ({ res, params }) => {
    if (!(await library.pairings.expire(params.code))) throw new HttpError(404, 'No such code');
    sendEmpty(res, 204);
  });

  router.add('GET', '/test/events', ({ res }) => sendJson(res, 200, { events: library.events.list() }));
  router.add('DELETE', '/test/events', async ({ res }) => (await library.events.clear(), sendEmpty(res, 204)));
}
