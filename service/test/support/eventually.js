// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import assert from 'node:assert/strict';

/** Looks until there is something to see. @template T @param {() => Promise<T|undefined|null|false>} look @returns {Promise<T>} */
export async function eventually(look) {
  const deadline = Date.now() + 20_000;
  for (;;) {
    const seen = await look();
    if (seen) return seen;
    assert.ok(Date.now() < deadline, 'it did not happen');
    await new Promise((resolve) => setTimeout(resolve, 5));
  }
}
