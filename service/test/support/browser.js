// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';

import { chromium } from 'playwright-core';

const ARGUMENTS = [
  '--no-sandbox',
  '--disable-gpu',
  '--disable-quic',
  '--no-first-run',
  '--disable-background-networking',
  '--disable-component-update',
  '--disable-sync',
];

/** A browser with a profile of its own, gone afterwards. */
export async function openBrowser() {
  const profile = mkdtempSync(path.join(tmpdir(), 'vantrell-browser-'));
  const context = await chromium.launchPersistentContext(profile, {
    executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
    headless: true,
    args: ARGUMENTS,
    viewport: { width: 1280, height: 900 },
  });
  return {
    page: await context.newPage(),
    async close() {
      await context.close();
      rmSync(profile, { recursive: true, force: true });
    },
  };
}
