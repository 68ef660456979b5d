// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { displayName } from '../api/fields.js';
import { withLibrary } from './dataOption.js';
import { UsageError } from './usage.js';

/** @param {string[]} args */
export function runProjectCommand([action, ...rest]) {
  return withLibrary(rest, {}, async (library, _values, [what]) => {
    const owner = library.accounts.owner();
    switch (action) {
      case 'create':
        if (!displayName(what ?? '')) throw new UsageError('project create needs a name');
        process.stdout.write(`${await library.projects.create(owner, displayName(what))}\n`);
        break;
      case 'list':
        for (const { id, name } of library.projects.list(owner)) process.stdout.write(`${id}\t${name}\n`);
        break;
      case 'delete':
        if (!what) throw new UsageError('project delete needs an id');
        if (!(await library.projects.delete(owner, what))) throw new Error('there is no such project');
        break;
      default:
        throw new UsageError('project create, project list or project delete');
    }
  });
}
