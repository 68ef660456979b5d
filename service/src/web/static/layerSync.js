// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

/** Farther apart than this, in seconds, the layer jumps; nearer it runs faster or slower until it is in step. */
const JUMP_S = 0.25;
/** Half a picture: nobody sees less. */
const IN_STEP_S = 0.012;
const MOST_CORRECTION = 0.12;

/**
 * Keeps a second movie in step with the one that is played: through playing, pausing, seeking and other
 * rates. The main movie never waits for its layer.
 */
export class LayerSync {
  #main;
  #layer;
  #offset;
  #isSeeking = false;

  /**
   * @param {HTMLVideoElement} main @param {HTMLVideoElement} layer
   * @param {number} offset seconds into the main movie at which the layer begins; may be negative
   */
  constructor(main, layer, offset) {
    this.#main = main;
    this.#layer = layer;
    this.#offset = offset;
  }

  /** Follows the main movie from now on. */
  start() {
    for (const name of ['play', 'playing', 'pause', 'waiting', 'seeking', 'seeked', 'ratechange', 'timeupdate', 'ended']) {
      this.#main.addEventListener(name, () => this.follow());
    }
    for (const name of ['loadedmetadata', 'canplay']) this.#layer.addEventListener(name, () => this.follow());
    this.#layer.addEventListener('seeked', () => {
      this.#isSeeking = false;
      this.follow();
    });
    this.follow();
  }

  /** Where the layer should be; nothing while it has no picture for this moment. @returns {number|undefined} */
  get target() {
    const time = this.#main.currentTime - this.#offset;
    const { duration } = this.#layer;
    return time >= 0 && !(time > duration) ? time : undefined;
  }

  /** Seconds by which the layer is ahead. */
  get drift() {
    return this.target === undefined ? 0 : this.#layer.currentTime - this.target;
  }

  /** Brings the layer where it should be. */
  follow() {
    const { target } = this;
    const [main, layer] = [this.#main, this.#layer];
    if (target === undefined) {
      if (!layer.paused) layer.pause();
      return;
    }
    const runs = !main.paused && !main.ended && !main.seeking && main.readyState > 2;
    const { drift } = this;
    if (!runs) {
      if (!layer.paused) layer.pause();
      if (Math.abs(drift) > 0.001) this.#jump(target);
      return;
    }
    if (Math.abs(drift) > JUMP_S) this.#jump(target);
    const correction = Math.abs(drift) > IN_STEP_S ? Math.max(-MOST_CORRECTION, Math.min(MOST_CORRECTION, -drift * 2)) : 0;
    const rate = main.playbackRate * (1 + correction);
    if (Math.abs(layer.playbackRate - rate) > 0.001) layer.playbackRate = rate;
    // Refused where the page is in the background, for one: the next moment tries again.
    if (layer.paused) layer.play()?.catch(() => {});
  }

  /** @param {number} target */
  #jump(target) {
    // One at a time: a seek that is replaced before it is done shows nothing.
    if (this.#isSeeking) return;
    this.#isSeeking = true;
    this.#layer.currentTime = target;
  }
}
