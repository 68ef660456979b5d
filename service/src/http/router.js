// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { HttpError } from './httpError.js';

/**
 * @typedef {import('node:http').IncomingMessage} Request
 * @typedef {import('node:http').ServerResponse} Response
 * @typedef {{req: Request, res: Response, url: URL, params: Record<string, string>}} Exchange
 * @typedef {(exchange: Exchange) => unknown} Handler
 */

/** Finds the handler of a request by method and path; `:name` stands for one path segment. */
export class Router {
  /** @type {{method: string, segments: string[], handler: Handler}[]} */
  #routes = [];

  /** @param {string} method @param {string} pattern @param {Handler} handler */
  add(method, pattern, handler) {
    this.#routes.push({ method, segments: pattern.split('/'), handler });
    return this;
  }

  /**
   * @param {string} method @param {string} pathname
   * @returns {{handler: Handler, params: Record<string, string>}}
   */
  find(method, pathname) {
    const segments = pathname.split('/');
    const allowed = new Set();
    for (const route of this.#routes) {
      const params = matchSegments(route.segments, segments);
      if (!params) continue;
      if (route.method === method || (method === 'HEAD' && route.method === 'GET')) {
        return { handler: route.handler, params };
      }
      allowed.add(route.method);
    }
    if (allowed.size === 0) throw new HttpError(404, 'Not found');
    throw new HttpError(405, 'Method not allowed', { headers: { Allow: [...allowed].join(', ') } });
  }
}

/**
 * @param {string[]} pattern @param {string[]} actual
 * @returns {Record<string, string>|undefined}
 */
function matchSegments(pattern, actual) {
  if (pattern.length !== actual.length) return undefined;
  /** @type {Record<string, string>} */
  const params = {};
  for (const [index, expected] of pattern.entries()) {
    const segment = actual[index];
    if (!expected.startsWith(':')) {
      if (expected !== segment) return undefined;
      continue;
    }
    if (segment === '') return undefined;
    try {
      params[expected.slice(1)] = decodeURIComponent(segment);
    } catch {
      throw new HttpError(400, 'Malformed path');
    }
  }
  return params;
}
