// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

/**
 * What the operator chooses. One object for the life of the server; only tests change it while it runs.
 *
 * @typedef {object} Config
 * @property {string} plan the plan's name, as applications show it
 * @property {number} maxVideoDurationMs
 * @property {number|null} maxVideoUploadBytes no limit when null
 * @property {'auto'|'standard'|'tus'} transfer how main files are sent; auto decides by size
 * @property {number} putThreshold largest file that "auto" sends with one PUT
 * @property {number} chunkSize bytes of one resumable request
 * @property {number} grantLifetimeMs how long an upload may go on before it must be refreshed
 * @property {number} checksumWaitMs how long a confirmation waits for the checksum
 */

const MiB = 1024 * 1024;

/** @returns {Config} */
export function defaultConfig() {
  return {
    plan: 'Self-hosted',
    maxVideoDurationMs: 12 * 3600_000,
    maxVideoUploadBytes: null,
    transfer: 'auto',
    putThreshold: 6 * MiB,
    chunkSize: 6 * MiB,
    grantLifetimeMs: 24 * 3600_000,
    checksumWaitMs: 10_000,
  };
}
