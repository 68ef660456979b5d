// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { createHash, randomBytes, randomInt, timingSafeEqual } from 'node:crypto';

/** Letters and digits that nobody confuses when reading a code aloud. */
const READABLE = 'BCDFGHJKMNPQRSTVWXZ23456789';
const ID_ALPHABET = 'abcdefghijklmnopqrstuvwxyz234567';

/** An identifier that goes into paths and URLs as it is. @param {string} prefix */
export function newId(prefix) {
  let id = `${prefix}_`;
  for (const byte of randomBytes(20)) id += ID_ALPHABET[byte & 31];
  return id;
}

/** 256 bits of secret. @param {string} prefix */
export function newSecret(prefix = '') {
  return prefix + randomBytes(32).toString('base64url');
}

/** A short code for people, such as BK7D-93QX. */
export function newReadableCode() {
  const letters = Array.from({ length: 8 }, () => READABLE[randomInt(READABLE.length)]);
  return `${letters.slice(0, 4).join('')}-${letters.slice(4).join('')}`;
}

/** @param {string} text */
export function sha256Hex(text) {
  return createHash('sha256').update(text).digest('hex');
}

/**
 * Compares two texts in a time that does not depend on where they differ, nor on their lengths.
 *
 * @param {string} a @param {string} b
 */
export function sameText(a, b) {
  const digest = (/** @type {string} */ text) => createHash('sha256').update(text).digest();
  return timingSafeEqual(digest(a), digest(b));
}
