// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

const QUOTE = 0x22;
const BACKSLASH = 0x5c;
const COLON = 0x3a;
const COMMA = 0x2c;
const OPEN_BRACE = 0x7b;
const CLOSE_BRACE = 0x7d;
const OPEN_BRACKET = 0x5b;
const CLOSE_BRACKET = 0x5d;
const SPACE = 0x20;

/** A value or key that is longer than this in the file is none that anybody asked for. */
const MAX_TOKEN_BYTES = 4096;
const MAX_DEPTH = 100;
/** Keys are told apart down to here: "outer" and "outer.inner". */
const NAMED_DEPTH = 2;

/**
 * Finds a few texts, numbers and booleans in a JSON object of any size, given in pieces, in as little memory
 * as they take themselves. Everything else is passed over without a look at its spelling.
 */
export class JsonScanner {
  /** @type {Map<string, string|number|boolean>} what was found, by "key" or "outer.inner" */
  found = new Map();
  #wanted;
  /** @type {boolean[]} for each open container whether it is an object */
  #open = [];
  /** @type {string[]} the key at each named depth */
  #keys = [];
  #isKeyNext = false;
  #inString = false;
  #escaped = false;
  /** @type {number[]} bytes of the text or other scalar under way */
  #token = [];

  /** @param {string[]} wanted */
  constructor(wanted) {
    this.#wanted = new Set(wanted);
  }

  /** @param {Uint8Array} piece @throws {SyntaxError} when it cannot be an object's JSON */
  push(piece) {
    for (const byte of piece) {
      if (this.#inString) this.#takeText(byte);
      else this.#takeOther(byte);
    }
  }

  /** Whether a whole object was given. */
  isComplete() {
    return this.#open.length === 0 && !this.#inString && this.#keys.length > 0;
  }

  /** @param {number} byte */
  #takeText(byte) {
    if (byte === QUOTE && !this.#escaped) {
      this.#inString = false;
      if (this.#isNamed()) this.#endText();
      return;
    }
    this.#escaped = byte === BACKSLASH && !this.#escaped;
    if (this.#isNamed() && this.#token.length <= MAX_TOKEN_BYTES) this.#token.push(byte);
  }

  /** @param {number} byte */
  #takeOther(byte) {
    switch (byte) {
      case QUOTE:
        this.#inString = true;
        this.#token.length = 0;
        break;
      case OPEN_BRACE:
      case OPEN_BRACKET:
        this.#enter(byte === OPEN_BRACE);
        break;
      case CLOSE_BRACE:
      case CLOSE_BRACKET:
        this.#endScalar();
        if (this.#open.pop() !== (byte === CLOSE_BRACE)) throw new SyntaxError('brackets do not match');
        this.#isKeyNext = false;
        break;
      case COLON:
        this.#isKeyNext = false;
        break;
      case COMMA:
        this.#endScalar();
        this.#isKeyNext = this.#open.at(-1) === true;
        break;
      default:
        if (byte <= SPACE) this.#endScalar();
        else if (this.#isNamed() && this.#token.length <= MAX_TOKEN_BYTES) this.#token.push(byte);
    }
  }

  /** @param {boolean} isObject */
  #enter(isObject) {
    if (this.#open.length === 0 && (!isObject || this.#keys.length > 0)) throw new SyntaxError('not one object');
    if (this.#open.length === MAX_DEPTH) throw new SyntaxError('nested too deeply');
    this.#token.length = 0;
    this.#open.push(isObject);
    this.#isKeyNext = isObject;
    if (this.#open.length <= NAMED_DEPTH) this.#keys[this.#open.length - 1] = '';
  }

  /** Whether what comes now is a key, or a value that has one. */
  #isNamed() {
    return this.#open.length <= NAMED_DEPTH && this.#open.length > 0 && this.#open.every(Boolean);
  }

  #endText() {
    const value = this.#parsed('"', '"');
    if (!this.#isKeyNext) this.#find(value);
    else this.#keys[this.#open.length - 1] = typeof value === 'string' ? value : '';
  }

  #endScalar() {
    if (this.#token.length > 0) this.#find(this.#parsed('', ''));
  }

  /** The token's value; nothing when it is too long or malformed. @param {string} before @param {string} after */
  #parsed(before, after) {
    const bytes = this.#token;
    this.#token = [];
    if (bytes.length > MAX_TOKEN_BYTES) return undefined;
    try {
      return JSON.parse(before + Buffer.from(bytes).toString('utf8') + after);
    } catch {
      return undefined;
    }
  }

  /** @param {unknown} value */
  #find(value) {
    const name = this.#keys.slice(0, this.#open.length).join('.');
    if (!this.#wanted.has(name)) return;
    if (typeof value === 'string' || typeof value === 'number' || typeof value === 'boolean') this.found.set(name, value);
  }
}
