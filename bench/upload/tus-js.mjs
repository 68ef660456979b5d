// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

// tus-js-client sending one file: node tus-js.mjs DESCRIPTOR FILE

import { createReadStream, readFileSync, statSync } from 'node:fs';
import { createRequire } from 'node:module';

const require = createRequire(new URL('../../service/package.json', import.meta.url));
const { Upload } = require('tus-js-client');

const [descriptorFile, file] = process.argv.slice(2);
const target = JSON.parse(readFileSync(descriptorFile, 'utf8'));
new Upload(createReadStream(file), {
  endpoint: target.endpoint,
  headers: { 'x-signature': target.signature, apikey: target.apiKey },
  metadata: {
    bucketName: target.bucket,
    objectName: target.objectName,
    contentType: target.contentType,
    cacheControl: '31536000',
  },
  chunkSize: target.chunkSize,
  uploadSize: statSync(file).size,
  retryDelays: null,
  onError(error) {
    process.stderr.write(`${error}\n`);
    process.exit(1);
  },
}).start();
