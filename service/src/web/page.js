// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { sendBody } from '../http/answers.js';
import { html, Markup } from './html.js';

const PAGE_HEADERS = {
  // Nothing from elsewhere, nothing inline, no frames around us.
  'Content-Security-Policy':
    "default-src 'none'; style-src 'self'; script-src 'self'; img-src 'self'; media-src 'self'; connect-src 'self'; " +
    "form-action 'self'; base-uri 'none'; frame-ancestors 'none'",
  'X-Frame-Options': 'DENY',
  'Referrer-Policy': 'same-origin',
  'Cross-Origin-Opener-Policy': 'same-origin',
  'Cross-Origin-Resource-Policy': 'same-origin',
};

const NAVIGATION = [
  ['/', 'Captures'],
  ['/projects', 'Projects'],
  ['/devices', 'Devices'],
];

/**
 * @typedef {object} Page
 * @property {string} title
 * @property {Markup} body
 * @property {string} [current] path of the navigation entry that this page belongs to
 * @property {boolean} [bare] without navigation: a page with one question
 * @property {string[]} [scripts]
 */

/**
 * @param {import('node:http').ServerResponse} res @param {number} status @param {Page} page
 * @param {Record<string, string>} [headers]
 */
export function sendPage(res, status, page, headers = {}) {
  sendBody(res, status, 'text/html; charset=utf-8', layout(page).text, { ...PAGE_HEADERS, ...headers });
}

/** @param {Page} page */
function layout({ title, body, current, bare = false, scripts = [] }) {
  const links = NAVIGATION.map(
    ([href, label]) => html`<a href="${href}"${href === current ? html` aria-current="page"` : ''}>${label}</a>`,
  );
  return html`<!doctype html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<title>${title} · Vantrell Capture</title>
<link rel="icon" href="/static/mark.svg" type="image/svg+xml">
<link rel="stylesheet" href="/static/style.css">
<script src="/static/localTime.js" defer></script>
${scripts.map((script) => html`<script type="module" src="/static/${script}"></script>`)}
</head>
<body class="${bare ? 'bare' : ''}">
<header class="bar">
<a class="brand" href="/"><img src="/static/mark.svg" alt="" width="26" height="26"><span>Vantrell Capture</span></a>
${bare ? '' : html`<nav>${links}</nav>`}
</header>
<main>
${body}
</main>
</body>
</html>
`;
}
