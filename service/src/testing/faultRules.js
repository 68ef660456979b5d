// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { invalid } from '../api/fields.js';

/**
 * What a rule does to a request that it matches. Several keys may stand together.
 *
 * Before the request is processed:
 *   status, body (JSON) | rawBody, headers, readBody   answer this instead; readBody: take the body first (default true)
 *   reset | close               end the connection at once, with RST or with FIN
 *   stall | stallMs             take the body and never answer, or wait for a time and go on
 * While its body arrives:
 *   resetAfterBytes | closeAfterBytes    end the connection after so many bytes
 *   stallAfterBytes (+ stallMs)          stop reading after so many bytes, for ever or for a time
 *   throttleBytesPerSecond               read this slowly
 * After it was processed in full:
 *   swallowAnswer | cutAnswerAfterBytes  end the connection without an answer, or inside its first bytes
 *   wrongOffset | missingOffset          falsify Upload-Offset by a difference, or leave it out
 *   answerStatus, answerBody, answerHeaders   replace parts of the answer; a header of null is left out
 *   answerDelayMs                        answer later
 *
 * @typedef {Partial<{status: number, body: unknown, rawBody: string, headers: Record<string, string>, readBody: boolean,
 *   reset: boolean, close: boolean, stall: boolean, stallMs: number, resetAfterBytes: number, closeAfterBytes: number,
 *   stallAfterBytes: number, throttleBytesPerSecond: number, swallowAnswer: boolean, cutAnswerAfterBytes: number,
 *   wrongOffset: number, missingOffset: boolean, answerStatus: number, answerBody: unknown,
 *   answerHeaders: Record<string, string|null>, answerDelayMs: number}>} Action
 *
 * @typedef {{method?: string, pathPattern: RegExp, skip: number, times: number, hits: number, action: Action}} Rule
 */

const KINDS = {
  status: 'number',
  body: 'any',
  rawBody: 'string',
  headers: 'object',
  readBody: 'boolean',
  reset: 'boolean',
  close: 'boolean',
  stall: 'boolean',
  stallMs: 'number',
  resetAfterBytes: 'number',
  closeAfterBytes: 'number',
  stallAfterBytes: 'number',
  throttleBytesPerSecond: 'number',
  swallowAnswer: 'boolean',
  cutAnswerAfterBytes: 'number',
  wrongOffset: 'number',
  missingOffset: 'boolean',
  answerStatus: 'number',
  answerBody: 'any',
  answerHeaders: 'object',
  answerDelayMs: 'number',
};

/** The rules in force, in the order they were given. */
export class FaultRules {
  /** @type {Rule[]} */
  #rules = [];

  /** @param {unknown} list */
  add(list) {
    if (!Array.isArray(list)) throw invalid('rules', 'must be an array');
    this.#rules.push(...list.map(parseRule));
  }

  clear() {
    this.#rules = [];
  }

  /** What is left of each rule, for tests that check whether a fault has happened. */
  describe() {
    return this.#rules.map(({ method, pathPattern, skip, times, hits, action }) => ({
      match: { method, pathPattern: pathPattern.source },
      skip,
      times: Number.isFinite(times) ? times : null,
      hits,
      action,
    }));
  }

  /**
   * The action for a request, which uses up one of its rule's times.
   *
   * @param {string} method @param {string} path @returns {Action|undefined}
   */
  take(method, path) {
    for (const rule of this.#rules) {
      if (rule.times <= 0 || (rule.method && rule.method !== method) || !rule.pathPattern.test(path)) continue;
      if (rule.skip > 0) {
        rule.skip -= 1;
        continue;
      }
      rule.times -= 1;
      rule.hits += 1;
      return rule.action;
    }
    return undefined;
  }
}

/** @param {any} rule @returns {Rule} */
function parseRule(rule) {
  const { match = {}, skip = 0, times = 1, action, ...unknown } = rule ?? {};
  const [stranger] = Object.keys(unknown);
  if (stranger) throw invalid(stranger, 'is not part of a rule');
  let pathPattern;
  try {
    pathPattern = new RegExp(match.pathPattern ?? '');
  } catch {
    throw invalid('pathPattern', 'is not a regular expression');
  }
  if (!Number.isInteger(skip)) throw invalid('skip', 'must be a whole number');
  if (times !== null && !Number.isInteger(times)) throw invalid('times', 'must be a whole number, or null for always');
  return { method: match.method, pathPattern, skip, times: times ?? Infinity, hits: 0, action: parseAction(action) };
}

/** A mistyped action would be a test that cannot fail. @param {any} action @returns {Action} */
function parseAction(action) {
  const object = typeof action === 'string' ? { [action]: true } : action;
  if (object === null || typeof object !== 'object' || Object.keys(object).length === 0) {
    throw invalid('action', 'must be a name or an object');
  }
  for (const [key, value] of Object.entries(object)) {
    const kind = /** @type {Record<string, string>} */ (KINDS)[key];
    if (!kind) throw invalid(`action.${key}`, 'is not known');
    if (kind !== 'any' && typeof value !== kind) throw invalid(`action.${key}`, `must be of type ${kind}`);
  }
  return object;
}
