// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

const KEPT_ENTRIES = 50_000;

const REQUEST_HEADERS = [
  'authorization',
  'cache-control',
  'connection',
  'content-length',
  'content-type',
  'expect',
  'tus-resumable',
  'upload-length',
  'upload-metadata',
  'upload-offset',
  'user-agent',
  'x-signature',
  'apikey',
  'x-vantrell-capture-version',
];
/** Noted as present, never copied. */
const SECRET_HEADERS = new Set(['authorization', 'x-signature', 'apikey']);
const ANSWER_HEADERS = ['location', 'upload-offset', 'content-type'];

/**
 * @typedef {object} Entry
 * @property {number} seq
 * @property {number} connection
 * @property {string} method
 * @property {string} path without its query
 * @property {Record<string, string>} headers
 * @property {number} bodyBytes body bytes that arrived
 * @property {number|null} status
 * @property {Record<string, string>} answerHeaders
 * @property {string} outcome "open", "sent", "swallowed", "cut", "reset", "closed", "stalled" or "aborted" (the client left)
 * @property {boolean} fault whether a rule applied
 * @property {number} startedMs on a clock that never jumps
 * @property {number|null} endedMs
 */

/** The requests that were made, in order of arrival. */
export class TrafficLog {
  /** @type {Entry[]} */
  #entries = [];
  #seq = 0;
  /** @type {Set<() => void>} */
  #watchers = new Set();

  /** @param {import('node:http').IncomingMessage} req @param {string} path @param {number} connection */
  open(req, path, connection) {
    /** @type {Entry} */
    const entry = {
      seq: (this.#seq += 1),
      connection,
      method: req.method ?? '',
      path,
      headers: pick(REQUEST_HEADERS, (name) => /** @type {string|undefined} */ (req.headers[name])),
      bodyBytes: 0,
      status: null,
      answerHeaders: {},
      outcome: 'open',
      fault: false,
      startedMs: performance.now(),
      endedMs: null,
    };
    this.#entries.push(entry);
    if (this.#entries.length > KEPT_ENTRIES) this.#entries.shift();
    this.#changed();
    return entry;
  }

  /** @param {Entry} entry @param {import('./answerTap.js').AnswerTap} answer @param {string} outcome */
  close(entry, answer, outcome) {
    entry.status = answer.status ?? null;
    entry.answerHeaders = pick(ANSWER_HEADERS, (name) => answer.headers.get(name));
    entry.outcome = outcome;
    entry.endedMs = performance.now();
    this.#changed();
  }

  entries() {
    return this.#entries;
  }

  clear() {
    this.#entries = [];
  }

  /**
   * Waits until `count` entries satisfy a test.
   *
   * @param {(entry: Entry) => boolean} test @param {number} count @param {number} timeoutMs
   * @returns {Promise<boolean>} false when the time ran out
   */
  waitFor(test, count, timeoutMs) {
    const enough = () => this.#entries.filter(test).length >= count;
    if (enough()) return Promise.resolve(true);
    return new Promise((resolve) => {
      const settle = (/** @type {boolean} */ result) => {
        this.#watchers.delete(watch);
        clearTimeout(timer);
        resolve(result);
      };
      const watch = () => {
        if (enough()) settle(true);
      };
      const timer = setTimeout(() => settle(false), timeoutMs);
      this.#watchers.add(watch);
    });
  }

  #changed() {
    for (const watch of this.#watchers) watch();
  }
}

/** @param {string[]} names @param {(name: string) => string|undefined} valueOf */
function pick(names, valueOf) {
  /** @type {Record<string, string>} */
  const picked = {};
  for (const name of names) {
    const value = valueOf(name);
    if (value !== undefined) picked[name] = SECRET_HEADERS.has(name) ? '(present)' : value;
  }
  return picked;
}
