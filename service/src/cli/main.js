// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { runKeyCommand } from './keyCommand.js';
import { runProjectCommand } from './projectCommand.js';
import { runServe } from './serveCommand.js';
import { runSignInCommand } from './signInCommand.js';
import { USAGE, UsageError } from './usage.js';

const COMMANDS = { serve: runServe, key: runKeyCommand, project: runProjectCommand, 'sign-in': runSignInCommand };

/**
 * Exit codes: 1 the command failed, 2 it was used wrongly.
 *
 * @param {string[]} argv
 */
export async function main(argv) {
  const [name, ...rest] = argv;
  if (name === '--help' || name === 'help') {
    process.stdout.write(USAGE);
    return;
  }
  try {
    const command = /** @type {Record<string, (rest: string[]) => unknown>} */ (COMMANDS)[name ?? ''];
    if (!command) throw new UsageError(name ? `unknown command: ${name}` : 'a command is required');
    await command(rest);
  } catch (error) {
    const { code, message } = /** @type {any} */ (error);
    const wrongUse = error instanceof UsageError || String(code).startsWith('ERR_PARSE_ARGS');
    process.stderr.write(wrongUse ? `${message}\n\n${USAGE}` : `${message}\n`);
    process.exitCode = wrongUse ? 2 : 1;
  }
}
