// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

/** A failure with an answer of its own: thrown anywhere under a request, sent by the server. */
export class HttpError extends Error {
  /**
   * @param {number} status
   * @param {string} message a sentence the person using the application may see
   * @param {{body?: Record<string, unknown>, headers?: Record<string, string>}} [more]
   */
  constructor(status, message, { body = {}, headers = {} } = {}) {
    super(message);
    this.status = status;
    this.body = { error: message, ...body };
    this.headers = headers;
  }
}

const NO_ROOM = new Set(['ENOSPC', 'EDQUOT', 'EFBIG']);

/** Whether the disk refused to take more. @param {unknown} error */
export function isDiskFull(error) {
  return NO_ROOM.has(/** @type {any} */ (error)?.code) || /** @type {any} */ (error)?.code === 'SQLITE_FULL';
}

/**
 * The answer for any failure. What is not an HttpError is a fault of ours: its text stays in the log.
 *
 * @param {unknown} error @returns {HttpError}
 */
export function toHttpError(error) {
  if (error instanceof HttpError) return error;
  if (isDiskFull(error)) return new HttpError(507, 'The library has no room left on its disk');
  if (/** @type {any} */ (error)?.code === 'SQLITE_BUSY') {
    return new HttpError(503, 'The library is busy. Try again in a moment.', { headers: { 'Retry-After': '5' } });
  }
  return new HttpError(500, 'Internal error');
}
