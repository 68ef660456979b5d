// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

// What the owner does in the browser, for the application's tests:
//   node answerPairing.js SIGN-IN-ADDRESS PAGE Approve|Deny

import { openBrowser } from './browser.js';

const [signInAddress, address, answer] = process.argv.slice(2);
const browser = await openBrowser();
try {
  await browser.page.goto(signInAddress);
  await browser.page.goto(address);
  await browser.page.getByRole('button', { name: answer }).click();
  await browser.page.getByRole('heading', { name: answer === 'Approve' ? 'Connected' : 'Not connected' }).waitFor();
} finally {
  await browser.close();
}
