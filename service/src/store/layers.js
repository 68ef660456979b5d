// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

/**
 * @typedef {import('./assets.js').AssetRow} AssetRow
 * @typedef {import('../storage/sidecarFacts.js').SidecarFacts} SidecarFacts
 */

/** How much the wall clock may have gone astray between two movies of one recording, in milliseconds. */
const CLOCK_TOLERANCE_MS = 5_000;
/** How long before the screen, or after its end, a camera of the same recording may begin, in seconds. */
const SLACK_S = 10;
/** Longer recordings are found from the screen's side alone. */
const LONGEST_MS = 6 * 3600 * 1000;

/** What was found of a capture's sidecar. @param {AssetRow} asset @returns {SidecarFacts} */
export const factsOf = (asset) => JSON.parse(asset.sidecar_facts ?? '{}');

/**
 * The other movie of the recording that `asset` is part of: the camera's of a screen, the screen's of a
 * camera. Recorders say by an id what belongs together. Where none is told, movies of the same moment do that
 * lie equally far apart on the recorder's two clocks: its anchors count from the machine's start, so that
 * another machine's are other numbers.
 *
 * @param {import('./assets.js').Assets} assets @param {AssetRow} asset
 * @returns {AssetRow|undefined} none too while the other one has not arrived
 */
export function otherLayer(assets, asset) {
  const facts = factsOf(asset);
  if (asset.kind !== 'video' || facts.anchor === undefined) return undefined;
  const wantsCamera = facts.source !== 'camera';
  if (facts.recordingId) {
    const { recordingId } = facts;
    const told = assets.layers(asset.account_id, wantsCamera, { recordingId });
    const other = told.find((candidate) => factsOf(candidate).anchor !== undefined);
    if (other) return other;
  }
  if (facts.capturedAt === undefined) return undefined;
  // A camera begins while the screen is recorded; how long a screen lasts that is looked for is not known.
  const reach = Math.max(wantsCamera ? asset.duration_ms ?? 0 : LONGEST_MS, SLACK_S * 1000) + CLOCK_TOLERANCE_MS;
  const near = assets.layers(asset.account_id, wantsCamera, {
    since: facts.capturedAt - reach,
    until: facts.capturedAt + reach,
  });
  return near
    .filter((candidate) => wantsCamera ? isSameMoment(asset, candidate) : isSameMoment(candidate, asset))
    .sort((a, b) => distance(asset, a) - distance(asset, b))[0];
}

/** Seconds into the screen's movie at which the camera's begins. @param {AssetRow} screen @param {AssetRow} camera */
export function layerOffset(screen, camera) {
  return (factsOf(camera).anchor ?? 0) - (factsOf(screen).anchor ?? 0);
}

/** @param {AssetRow} screen @param {AssetRow} camera */
function isSameMoment(screen, camera) {
  const [a, b] = [factsOf(screen), factsOf(camera)];
  // Movies that say otherwise belong to other recordings.
  if (a.recordingId && b.recordingId) return false;
  if (a.anchor === undefined || b.anchor === undefined) return false;
  const offset = b.anchor - a.anchor;
  const onWallClock = (b.capturedAt ?? 0) - (a.capturedAt ?? 0);
  return (
    offset >= -SLACK_S &&
    offset <= (screen.duration_ms ?? 0) / 1000 + SLACK_S &&
    Math.abs(onWallClock - offset * 1000) <= CLOCK_TOLERANCE_MS
  );
}

/** @param {AssetRow} a @param {AssetRow} b */
function distance(a, b) {
  return Math.abs((factsOf(a).anchor ?? 0) - (factsOf(b).anchor ?? 0));
}
