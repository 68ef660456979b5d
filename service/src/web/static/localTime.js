// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

// Moments arrive in UTC; the reader's own clock is what they compare them with.
const format = new Intl.DateTimeFormat(undefined, { dateStyle: 'medium', timeStyle: 'short' });
for (const element of document.querySelectorAll('time[datetime]')) {
  element.textContent = format.format(new Date(element.dateTime));
}
