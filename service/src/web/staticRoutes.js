// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import path from 'node:path';

import { sendFile } from '../http/sendFile.js';

const FOLDER = path.join(import.meta.dirname, 'static');

/** A closed list: nothing else under the folder can be asked for. */
const FILES = {
  'style.css': 'text/css; charset=utf-8',
  'mark.svg': 'image/svg+xml',
  'localTime.js': 'text/javascript; charset=utf-8',
  'player.js': 'text/javascript; charset=utf-8',
  'eventTrack.js': 'text/javascript; charset=utf-8',
  'overlay.js': 'text/javascript; charset=utf-8',
  'cameraLayer.js': 'text/javascript; charset=utf-8',
  'layerSync.js': 'text/javascript; charset=utf-8',
};

/** @param {import('../http/router.js').Router} router */
export function addStaticRoutes(router) {
  for (const [name, type] of Object.entries(FILES)) {
    router.add('GET', `/static/${name}`, (exchange) => sendFile(exchange, path.join(FOLDER, name), { type }));
  }
}
