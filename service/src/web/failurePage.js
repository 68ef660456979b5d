// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { sendBody } from '../http/answers.js';

/** @param {import('node:http').ServerResponse} res @param {import('../http/httpError.js').HttpError} failure */
export function sendFailurePage(res, failure) {
  sendBody(res, failure.status, 'text/plain; charset=utf-8', `${failure.message}\n`, failure.headers);
}
