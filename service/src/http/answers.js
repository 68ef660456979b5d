// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

/**
 * @param {import('node:http').ServerResponse} res
 * @param {number} status @param {unknown} value @param {Record<string, string>} [headers]
 */
export function sendJson(res, status, value, headers = {}) {
  sendBody(res, status, 'application/json; charset=utf-8', JSON.stringify(value), headers);
}

/**
 * @param {import('node:http').ServerResponse} res
 * @param {number} status @param {string} type @param {string} text @param {Record<string, string>} [headers]
 */
export function sendBody(res, status, type, text, headers = {}) {
  const body = Buffer.from(text);
  res.writeHead(status, {
    'Content-Type': type,
    'Content-Length': body.length,
    'Cache-Control': 'no-store',
    'X-Content-Type-Options': 'nosniff',
    ...headers,
  });
  res.end(res.req.method === 'HEAD' ? undefined : body);
}

/** @param {import('node:http').ServerResponse} res @param {number} status */
export function sendEmpty(res, status) {
  res.writeHead(status, status === 204 ? {} : { 'Content-Length': 0 });
  res.end();
}

/** @param {import('node:http').ServerResponse} res @param {string} location */
export function redirect(res, location) {
  res.writeHead(303, { Location: location, 'Content-Length': 0, 'Cache-Control': 'no-store' });
  res.end();
}
