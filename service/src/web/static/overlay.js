// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

const RING_PX = 26;

/** Draws clicks, scrolls and, where the picture has none, the pointer over a playing video. */
export class Overlay {
  #canvas;
  #context;
  #track;

  /** @param {HTMLCanvasElement} canvas @param {import('./eventTrack.js').EventTrack} track */
  constructor(canvas, track) {
    this.#canvas = canvas;
    this.#context = canvas.getContext('2d');
    this.#track = track;
  }

  /** @param {number} t milliseconds into the recording */
  draw(t) {
    const { width, height } = this.#fit();
    this.#context.clearRect(0, 0, width, height);
    for (const moment of this.#track.momentsAt(t)) {
      const [x, y] = [moment.x * width, moment.y * height];
      if (moment.kind === 'down') this.#ring(x, y, moment.age);
      else this.#wheel(x, y, moment.age);
    }
    const pointer = this.#track.drawsPointer ? this.#track.pointerAt(t) : undefined;
    if (pointer) this.#arrow(pointer.x * width, pointer.y * height);
  }

  #fit() {
    const { clientWidth: width, clientHeight: height } = this.#canvas;
    const ratio = window.devicePixelRatio;
    if (this.#canvas.width !== Math.round(width * ratio) || this.#canvas.height !== Math.round(height * ratio)) {
      this.#canvas.width = Math.round(width * ratio);
      this.#canvas.height = Math.round(height * ratio);
    }
    this.#context.setTransform(ratio, 0, 0, ratio, 0, 0);
    return { width, height };
  }

  #ring(x, y, age) {
    const context = this.#context;
    context.globalAlpha = 1 - age;
    context.beginPath();
    context.arc(x, y, 6 + RING_PX * Math.sqrt(age), 0, Math.PI * 2);
    // A dark edge under a light line shows on any picture.
    context.lineWidth = 5;
    context.strokeStyle = 'rgb(0 0 0 / 35%)';
    context.stroke();
    context.lineWidth = 3;
    context.strokeStyle = '#ffb4a2';
    context.stroke();
    context.globalAlpha = 1;
  }

  #wheel(x, y, age) {
    const context = this.#context;
    context.globalAlpha = 1 - age;
    context.lineWidth = 3;
    context.lineCap = 'round';
    context.strokeStyle = '#8ad6c8';
    for (const direction of [-1, 1]) {
      const tip = y + direction * (10 + 8 * age);
      context.beginPath();
      context.moveTo(x - 6, tip - direction * 6);
      context.lineTo(x, tip);
      context.lineTo(x + 6, tip - direction * 6);
      context.stroke();
    }
    context.globalAlpha = 1;
  }

  #arrow(x, y) {
    const context = this.#context;
    context.beginPath();
    for (const [dx, dy] of [[0, 0], [0, 17], [4.5, 13], [7.5, 19.5], [10, 18.5], [7, 12], [12.5, 12]]) {
      context.lineTo(x + dx, y + dy);
    }
    context.closePath();
    context.fillStyle = '#111';
    context.fill();
    context.lineWidth = 1.4;
    context.strokeStyle = '#fff';
    context.stroke();
  }
}
