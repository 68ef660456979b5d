// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { HttpError } from '../http/httpError.js';

/** @typedef {Record<string, unknown>} Body */

/** Largest integer of a size or duration that a JSON number carries exactly. */
const MAX_INTEGER = Number.MAX_SAFE_INTEGER;

/**
 * A required text.
 *
 * @param {Body} body @param {string} key @param {{max: number}} limits in UTF-16 units
 */
export function textField(body, key, { max }) {
  const value = body[key];
  if (typeof value !== 'string' || value === '') throw invalid(key, 'must be a non-empty string');
  if (value.length > max) throw invalid(key, `must not be longer than ${max} characters`);
  return value;
}

/** @param {Body} body @param {string} key @param {{max: number}} limits @returns {string|null} */
export function optionalTextField(body, key, limits) {
  return body[key] === undefined || body[key] === null || body[key] === '' ? null : textField(body, key, limits);
}

/** A required whole number that is not negative. @param {Body} body @param {string} key */
export function countField(body, key, { max = MAX_INTEGER } = {}) {
  const value = body[key];
  if (typeof value !== 'number' || !Number.isSafeInteger(value) || value < 0) {
    throw invalid(key, 'must be a whole number that is not negative');
  }
  if (value > max) throw invalid(key, `must not be above ${max}`);
  return value;
}

/** @param {Body} body @param {string} key @returns {number|null} */
export function optionalCountField(body, key) {
  return body[key] === undefined || body[key] === null ? null : countField(body, key);
}

/** @param {string} key @param {string} why */
export function invalid(key, why) {
  return new HttpError(400, `${key} ${why}`);
}

/** Makes a name that a stranger chose fit to show: no line breaks, controls or direction overrides. */
export function displayName(/** @type {string} */ text) {
  return text
    .replace(/[\p{Cc}\p{Cf}\u2028\u2029]/gu, ' ')
    .replace(/\s+/g, ' ')
    .trim();
}
