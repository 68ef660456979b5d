// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { addApprovalPages } from '../pairing/approvalPages.js';
import { addCapturePages } from './capturePages.js';
import { addDevicePages } from './devicePages.js';
import { addFileRoutes } from './fileRoutes.js';
import { addLibraryPages } from './libraryPages.js';
import { addLoginPages } from './loginPages.js';
import { addProjectPages } from './projectPages.js';
import { addStaticRoutes } from './staticRoutes.js';

/**
 * Everything for people.
 *
 * @param {import('../http/router.js').Router} router @param {import('../service.js').Service} service
 */
export function addWebRoutes(router, service) {
  addStaticRoutes(router);
  addFileRoutes(router, service);
  addLibraryPages(router, service);
  addCapturePages(router, service);
  addProjectPages(router, service);
  addDevicePages(router, service);
  addApprovalPages(router, service);
  addLoginPages(router, service);
}
