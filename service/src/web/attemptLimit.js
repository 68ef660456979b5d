// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

const WINDOW_MS = 60_000;
const MAX_FAILURES = 10;
/** A stranger with many addresses must not fill our memory. */
const MAX_TRACKED = 10_000;

/** How often one address may be wrong within a minute. */
export class AttemptLimit {
  /** @type {Map<string, number[]>} times of failures */
  #failures = new Map();

  /** @param {string} address */
  allows(address) {
    return this.#recent(address).length < MAX_FAILURES;
  }

  /** @param {string} address */
  countFailure(address) {
    const times = [...this.#recent(address), Date.now()];
    if (this.#failures.size >= MAX_TRACKED) this.#failures.clear();
    this.#failures.set(address, times);
  }

  /** @param {string} address */
  #recent(address) {
    return (this.#failures.get(address) ?? []).filter((time) => Date.now() - time < WINDOW_MS);
  }
}
