// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

/**
 * What changes one capture or its files happens one at a time: a registration, a file that takes its place,
 * a confirmation, a deletion. Each looks at the capture only when it has its turn, so that none acts on what
 * another has just changed.
 */
export class CaptureLocks {
  /** @type {Map<string, Promise<unknown>>} the last in each row */
  #last = new Map();

  /**
   * @template T @param {string} accountId @param {string} captureId
   * @param {() => Promise<T>} work @returns {Promise<T>}
   */
  run(accountId, captureId, work) {
    const key = `${accountId}/${captureId}`;
    const turn = (this.#last.get(key) ?? Promise.resolve()).then(work);
    const ended = turn
      .catch(() => {})
      .then(() => {
        if (this.#last.get(key) === ended) this.#last.delete(key);
      });
    this.#last.set(key, ended);
    return turn;
  }
}
