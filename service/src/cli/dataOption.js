// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { parseArgs } from 'node:util';

import { Library } from '../store/library.js';
import { UsageError } from './usage.js';

/**
 * Runs a short command on the library of --data, beside a server that may be running.
 *
 * @param {string[]} args @param {Record<string, {type: 'string'}>} options
 * @param {(library: Library, values: Record<string, any>, positionals: string[]) => Promise<void>} run
 */
export async function withLibrary(args, options, run) {
  const { values, positionals } = parseArgs({
    args,
    options: { data: { type: 'string' }, ...options },
    allowPositionals: true,
  });
  if (!values.data) throw new UsageError('--data is required');
  const library = await Library.open(/** @type {string} */ (values.data));
  try {
    await run(library, values, positionals);
  } finally {
    await library.close();
  }
}
