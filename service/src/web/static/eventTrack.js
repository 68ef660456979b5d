// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

/** How long a click or scroll stays visible, in milliseconds. */
export const FADE_MS = 600;

/**
 * The input events of a recording, prepared for asking what is to be seen at a moment. Positions become
 * fractions of the picture, so that the player may have any size.
 */
export class EventTrack {
  /** @param {any} sidecar as the recorder wrote it */
  constructor(sidecar) {
    const { pixelSize, display, recording } = sidecar ?? {};
    const scale = display?.scaleFactor > 0 ? display.scaleFactor : 1;
    const width = pixelSize?.width / scale;
    const height = pixelSize?.height / scale;
    const events = Array.isArray(recording?.events) && width > 0 && height > 0 ? recording.events : [];
    const placed = events
      .filter(({ t, x, y }) => [t, x, y].every(Number.isFinite))
      .map(({ t, kind, x, y }) => ({ t, kind, x: x / width, y: y / height }))
      .sort((a, b) => a.t - b.t);
    /** Clicks (where the button went down) and scrolls. */
    this.moments = placed.filter(({ kind }) => kind === 'down' || kind === 'scroll');
    this.drawsPointer = recording?.cursorInVideo === false;
    this.#path = placed.filter(({ kind }) => kind !== 'scroll');
  }

  #path;

  /** The clicks and scrolls to show at `t`, each with its age from 0 (now) to 1 (gone). @param {number} t */
  momentsAt(t) {
    const result = [];
    for (let index = lastAtOrBefore(this.moments, t); index >= 0; index -= 1) {
      const age = (t - this.moments[index].t) / FADE_MS;
      if (age >= 1) break;
      result.push({ ...this.moments[index], age });
    }
    return result;
  }

  /** Where the pointer is at `t`; nothing before it first moved or while it was outside. @param {number} t */
  pointerAt(t) {
    const index = lastAtOrBefore(this.#path, t);
    const from = this.#path[index];
    if (!from || from.kind === 'exit') return undefined;
    const to = this.#path[index + 1];
    // Moves are recorded only while the pointer moves: a long gap means that it stood still.
    if (!to || to.t - from.t > 100) return { x: from.x, y: from.y };
    const part = (t - from.t) / (to.t - from.t);
    return { x: from.x + (to.x - from.x) * part, y: from.y + (to.y - from.y) * part };
  }
}

/** @param {{t: number}[]} sorted @param {number} t @returns {number} -1 when all are later */
function lastAtOrBefore(sorted, t) {
  let low = 0;
  let high = sorted.length;
  while (low < high) {
    const middle = (low + high) >> 1;
    if (sorted[middle].t <= t) low = middle + 1;
    else high = middle;
  }
  return low - 1;
}
