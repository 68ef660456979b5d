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

// A machine with much else to do takes long to start one.
const PATIENCE_MS = 150_000;

/** A browser with a profile of its own, gone afterwards. */
export async function openBrowser() {
  const profile = mkdtempSync(path.join(tmpdir(), 'vantrell-browser-'));
  const context = await chromium.launchPersistentContext(profile, {
    executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
    headless: true,
    args: ARGUMENTS,
    viewport: { width: 1280, height: 900 },
    timeout: PATIENCE_MS,
  });
  context.setDefaultTimeout(PATIENCE_MS);
  return {
    page: await context.newPage(),
    async close() {
      await context.close();
      rmSync(profile, { recursive: true, force: true });
    },
  };
}
