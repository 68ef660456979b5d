// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

/** How long a consumer gets to take what was already handed to it, before the connection is ended. */
const SETTLE_MS = 50;
const SETTLE_LIMIT_MS = 2_000;

/**
 * Sits between the parser of a connection and the body of a request: counts what arrives and can
 * hold it back. The body stays an ordinary stream for whoever reads it, and where no fault is asked
 * for nothing but an addition happens per piece.
 */
export class BodyTap {
  bytes = 0;
  #req;
  #push;
  #read;
  /** @type {((chunk: Buffer) => boolean)|undefined} */
  #filter;
  #ended = false;
  /** While the body stands still its end does, too: a short body would be answered. */
  #holdsEnd = false;
  #endIsHeld = false;

  /** @param {import('node:http').IncomingMessage} req */
  constructor(req) {
    this.#req = req;
    this.#push = req.push.bind(req);
    this.#read = req._read.bind(req);
    req.push = (/** @type {Buffer|null} */ chunk) => {
      if (chunk === null) return this.#pushEnd();
      this.bytes += chunk.length;
      return this.#filter ? this.#filter(chunk) : this.#push(chunk);
    };
  }

  #pushEnd() {
    this.#endIsHeld = this.#holdsEnd;
    return this.#ended || this.#holdsEnd ? false : this.#push(null);
  }

  /** @param {number} limit @param {() => void} endConnection */
  cutAfter(limit, endConnection) {
    let room = limit;
    this.#filter = (chunk) => {
      const taken = chunk.subarray(0, room);
      room -= taken.length;
      if (taken.length > 0) this.#push(taken);
      if (room > 0) return true;
      this.#ended = true;
      this.#filter = () => false;
      this.#whenConsumed(endConnection);
      return false;
    };
  }

  /** @param {number} limit @param {number|undefined} forMs */
  stallAfter(limit, forMs) {
    let room = limit;
    /** @type {Buffer[]} */
    const held = [];
    this.#filter = (chunk) => {
      const taken = chunk.subarray(0, room);
      room -= taken.length;
      if (taken.length > 0) this.#push(taken);
      if (room > 0) return true;
      this.#holdsEnd = true;
      held.push(chunk.subarray(taken.length));
      this.#req._read = () => {};
      if (held.length === 1 && forMs !== undefined) setTimeout(() => this.#release(held), forMs);
      return false;
    };
  }

  /** @param {number} bytesPerSecond */
  throttle(bytesPerSecond) {
    let restMs = 0;
    this.#filter = (chunk) => {
      restMs = (chunk.length / bytesPerSecond) * 1000;
      this.#push(chunk);
      return false;
    };
    this.#req._read = (size) => {
      setTimeout(() => this.#read(size), restMs);
    };
  }

  /** @param {Buffer[]} held */
  #release(held) {
    this.#filter = undefined;
    this.#req._read = this.#read;
    this.#holdsEnd = false;
    for (const chunk of held) if (chunk.length > 0) this.#push(chunk);
    if (this.#endIsHeld) this.#push(null);
    else this.#read(0);
  }

  /** @param {() => void} then */
  #whenConsumed(then) {
    const deadline = Date.now() + SETTLE_LIMIT_MS;
    const timer = setInterval(() => {
      if (this.#req.readableLength > 0 && Date.now() < deadline) return;
      clearInterval(timer);
      then();
    }, SETTLE_MS);
  }
}
