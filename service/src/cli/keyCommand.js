// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { withLibrary } from './dataOption.js';
import { UsageError } from './usage.js';

/** @param {string[]} args */
export function runKeyCommand([action, ...rest]) {
  withLibrary(rest, { name: { type: 'string' } }, (library, { name }, [which]) => {
    const owner = library.accounts.owner();
    switch (action) {
      case 'create':
        process.stdout.write(`${library.keys.create(owner, name ?? 'Command line')}\n`);
        break;
      case 'list':
        for (const key of library.keys.list(owner)) {
          process.stdout.write(`${key.id}\t${new Date(key.created_at).toISOString()}\t${key.name}\n`);
        }
        break;
      case 'revoke':
        if (!which) throw new UsageError('key revoke needs a key or its id');
        if (!library.keys.revoke(owner, which) && !library.keys.revokeByText(which)) {
          throw new Error('there is no such live key');
        }
        break;
      default:
        throw new UsageError('key create, key list or key revoke');
    }
  });
}
