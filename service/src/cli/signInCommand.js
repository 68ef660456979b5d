// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { signInAddress } from '../web/loginPages.js';
import { withLibrary } from './dataOption.js';

/** @param {string[]} args */
export function runSignInCommand(args) {
  return withLibrary(args, { page: { type: 'string' } }, async (library, { page }) => {
    const origin = library.settings.origin();
    if (!origin) throw new Error('start the service once before');
    process.stdout.write(`${await signInAddress(library, origin, page)}\n`);
  });
}
