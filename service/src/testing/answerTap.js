// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { STATUS_CODES } from 'node:http';

/** @typedef {import('./faultRules.js').Action} Action */

/**
 * Notes what is answered, and changes it where a rule says so. A changed answer is gathered first and
 * sent as a whole.
 */
export class AnswerTap {
  /** @type {number|undefined} */
  status;
  /** @type {Map<string, string>} lower-case names */
  headers = new Map();
  /** @type {'sent'|'swallowed'|'cut'|undefined} set when the answer was dealt with */
  outcome;
  #res;

  /** @param {import('node:http').ServerResponse} res */
  constructor(res) {
    this.#res = res;
    const writeHead = res.writeHead.bind(res);
    // The one place that every answer passes, whoever writes it.
    res.writeHead = /** @type {any} */ (
      (/** @type {number} */ status, /** @type {any[]} */ ...rest) => {
        this.#note(status, rest.at(-1));
        return writeHead(status, ...rest);
      }
    );
  }

  /** @param {number} status @param {unknown} headers in either form that writeHead takes */
  #note(status, headers) {
    this.status = status;
    const pairs = Array.isArray(headers)
      ? headers.flatMap((value, index) => (index % 2 ? [[headers[index - 1], value]] : []))
      : Object.entries(typeof headers === 'object' ? (headers ?? {}) : {});
    for (const [name, value] of pairs) this.headers.set(String(name).toLowerCase(), String(value));
  }

  /** @param {Action} action */
  alter(action) {
    const res = this.#res;
    const { writeHead, end } = { writeHead: res.writeHead.bind(res), end: res.end.bind(res) };
    /** @type {Buffer[]} */
    const pieces = [];
    const gather = (/** @type {unknown} */ chunk) => {
      if (typeof chunk === 'string' || chunk instanceof Uint8Array) pieces.push(Buffer.from(chunk));
    };
    res.writeHead = /** @type {any} */ (
      (/** @type {number} */ status, /** @type {any[]} */ ...rest) => {
        this.#note(status, rest.at(-1));
        return res;
      }
    );
    res.write = /** @type {any} */ ((/** @type {unknown} */ chunk) => (gather(chunk), true));
    res.end = /** @type {any} */ (
      (/** @type {any[]} */ ...rest) => {
        gather(rest[0]);
        const done = rest.find((argument) => typeof argument === 'function');
        setTimeout(() => {
          this.#send(action, Buffer.concat(pieces), writeHead, end);
          done?.();
        }, action.answerDelayMs ?? 0);
        return res;
      }
    );
  }

  /**
   * @param {Action} action @param {Buffer} body
   * @param {(status: number, headers: Record<string, string>) => unknown} writeHead
   * @param {(body?: Buffer) => unknown} end
   */
  #send(action, body, writeHead, end) {
    const socket = this.#res.socket;
    if (action.swallowAnswer) {
      this.outcome = 'swallowed';
      socket?.destroy();
      return;
    }
    const { status, headers, bytes } = this.#altered(action, body);
    if (action.cutAnswerAfterBytes !== undefined) {
      this.outcome = 'cut';
      const lines = [`HTTP/1.1 ${status} ${STATUS_CODES[status] ?? ''}`];
      for (const [name, value] of Object.entries(headers)) lines.push(`${name}: ${value}`);
      const raw = Buffer.concat([Buffer.from(`${lines.join('\r\n')}\r\n\r\n`), bytes]);
      socket?.end(raw.subarray(0, action.cutAnswerAfterBytes));
      return;
    }
    writeHead(status, headers);
    end(this.#res.req.method === 'HEAD' || status === 204 ? undefined : bytes);
  }

  /** @param {Action} action @param {Buffer} body */
  #altered(action, body) {
    const headers = new Map(this.headers);
    if (action.missingOffset) headers.delete('upload-offset');
    const offset = headers.get('upload-offset');
    if (action.wrongOffset !== undefined && offset !== undefined) {
      headers.set('upload-offset', String(Number(offset) + action.wrongOffset));
    }
    let bytes = body;
    if (action.answerBody !== undefined) {
      const text = typeof action.answerBody === 'string' ? action.answerBody : JSON.stringify(action.answerBody);
      bytes = Buffer.from(text);
      headers.set('content-length', String(bytes.length));
    }
    for (const [name, value] of Object.entries(action.answerHeaders ?? {})) {
      if (value === null) headers.delete(name.toLowerCase());
      else headers.set(name.toLowerCase(), value);
    }
    return { status: action.answerStatus ?? this.status ?? 200, headers: Object.fromEntries(headers), bytes };
  }
}
