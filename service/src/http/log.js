// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

/**
 * Log lines on standard error. Callers pass paths without queries and ids without secrets: no key,
 * signature or signed URL is ever logged.
 */
export class Log {
  #quiet;

  /** @param {{quiet?: boolean}} [options] */
  constructor({ quiet = false } = {}) {
    this.#quiet = quiet;
  }

  /** @param {string} message */
  info(message) {
    if (!this.#quiet) this.#write('info', message);
  }

  /** @param {string} message */
  error(message) {
    this.#write('error', message);
  }

  /** @param {string} level @param {string} message */
  #write(level, message) {
    // Text of a client's making must not start lines of its own.
    const safe = message.replace(/[\u0000-\u001f\u007f]/g, ' ');
    process.stderr.write(`${new Date().toISOString()} ${level} ${safe}\n`);
  }
}
