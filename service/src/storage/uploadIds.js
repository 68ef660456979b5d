// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { randomBytes } from 'node:crypto';

const UPLOAD_ID = /^(cap_[a-z2-7]+)\.[0-9a-f]{32}$/;

/** The id of a new resumable upload of a capture. @param {string} assetId */
export function newUploadId(assetId) {
  return `${assetId}.${randomBytes(16).toString('hex')}`;
}

/** The capture that an upload is of. @param {string} uploadId @returns {string|undefined} nothing when it is no upload's id */
export function assetOfUpload(uploadId) {
  return UPLOAD_ID.exec(uploadId)?.[1];
}
