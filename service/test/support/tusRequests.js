// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

/** Single tus requests, so that a test can send exactly what it means to. */

/** @param {any} upload the descriptor @param {Record<string, string>} [more] */
export function tusHeaders(upload, more = {}) {
  return { 'Tus-Resumable': '1.0.0', 'x-signature': upload.signature, apikey: upload.apiKey, ...more };
}

/** @param {any} upload @param {number} bytes @param {Record<string, string>} [overrides] metadata that differs */
export async function tusCreate(upload, bytes, overrides = {}) {
  const metadata = {
    bucketName: upload.bucket,
    objectName: upload.objectName,
    contentType: upload.contentType,
    cacheControl: '31536000',
    ...overrides,
  };
  return fetch(upload.endpoint, {
    method: 'POST',
    headers: tusHeaders(upload, {
      'Upload-Length': String(bytes),
      'Upload-Metadata': Object.entries(metadata)
        .map(([key, value]) => `${key} ${Buffer.from(value).toString('base64')}`)
        .join(','),
    }),
  });
}

/** @param {any} upload @param {string} location @param {number} offset @param {Uint8Array} chunk */
export function tusPatch(upload, location, offset, chunk) {
  return fetch(location, {
    method: 'PATCH',
    headers: tusHeaders(upload, {
      'Upload-Offset': String(offset),
      'Content-Type': 'application/offset+octet-stream',
    }),
    body: chunk,
  });
}

/** @param {any} upload @param {string} location @returns {Promise<number>} */
export async function tusOffset(upload, location) {
  const answer = await fetch(location, { method: 'HEAD', headers: tusHeaders(upload) });
  if (!answer.ok) throw new Error(`HEAD answered ${answer.status}`);
  return Number(answer.headers.get('upload-offset'));
}
