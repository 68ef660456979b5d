// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { withLibrary } from './dataOption.js';
import { UsageError } from './usage.js';

/** @param {string[]} args */
export function runKeyCommand([action, ...rest]) {
  return withLibrary(rest, { name: { type: 'string' } }, async (library, { name }, [which]) => {
    const owner = library.accounts.owner();
    switch (action) {
      case 'create':
        process.stdout.write(`${await library.keys.create(owner, name ?? 'Command line')}\n`);
        break;
      case 'list':
        for (const key of library.keys.list(owner)) {
          process.stdout.write(`${key.id}\t${new Date(key.created_at).toISOString()}\t${key.name}\n`);
        }
        break;
      case 'revoke':
        if (!which) throw new UsageError('key revoke needs a key or its id');
        if (!(await library.keys.revoke(owner, which)) && !(await library.keys.revokeByText(which))) {
          throw new Error('there is no such live key');
        }
        break;
      default:
        throw new UsageError('key create, key list or key revoke');
    }
  });
}
