// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import assert from 'node:assert/strict';
import { test } from 'node:test';

import { EventTrack, FADE_MS } from '../src/web/static/eventTrack.js';

/** @param {unknown[]} events @param {Record<string, unknown>} [recording] */
const track = (events, recording = {}) =>
  new EventTrack({
    display: { scaleFactor: 2 },
    pixelSize: { width: 400, height: 200 },
    recording: { events, ...recording },
  });

test('a click is seen from its moment until it has faded', () => {
  const clicks = track([{ t: 1000, kind: 'down', x: 50, y: 25 }, { t: 1100, kind: 'up', x: 50, y: 25 }]);
  assert.deepEqual(clicks.momentsAt(999), []);
  assert.deepEqual(clicks.momentsAt(1000), [{ t: 1000, kind: 'down', x: 0.25, y: 0.25, age: 0 }]);
  assert.equal(clicks.momentsAt(1000 + FADE_MS / 2)[0].age, 0.5);
  assert.deepEqual(clicks.momentsAt(1000 + FADE_MS), []);
});

test('the pointer glides between close moves, rests in gaps and hides outside', () => {
  const moves = track([
    { t: 0, kind: 'move', x: 0, y: 0 },
    { t: 20, kind: 'move', x: 200, y: 100 },
    { t: 900, kind: 'move', x: 100, y: 50 },
    { t: 950, kind: 'exit', x: 0, y: 50 },
  ], { cursorInVideo: false });
  assert.equal(moves.drawsPointer, true);
  assert.deepEqual(moves.pointerAt(10), { x: 0.5, y: 0.5 });
  assert.deepEqual(moves.pointerAt(500), { x: 1, y: 1 });
  assert.equal(moves.pointerAt(950), undefined);
  assert.equal(moves.pointerAt(-1), undefined);
});

test('a sidecar with nothing usable shows nothing', () => {
  for (const sidecar of [null, {}, { pixelSize: { width: 0, height: 0 } }, { recording: { events: 'none' } }]) {
    assert.deepEqual(new EventTrack(sidecar).momentsAt(0), []);
  }
});
