// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { AnswerTap } from './answerTap.js';
import { BodyTap } from './bodyTap.js';
import { FaultRules } from './faultRules.js';
import { TrafficLog } from './trafficLog.js';

const CONTROL_PREFIX = '/test/';

/** @typedef {import('node:http').IncomingMessage} Request */
/** @typedef {import('node:http').ServerResponse} Response */

/** In test mode, stands before the service: notes every request and makes some of them fail. */
export class Traffic {
  rules = new FaultRules();
  log = new TrafficLog();
  /** @type {Map<import('node:net').Socket, number>} */
  #connections = new Map();
  #opened = 0;

  /** @param {import('node:net').Socket} socket */
  watchConnection(socket) {
    this.#opened += 1;
    this.#connections.set(socket, this.#opened);
    socket.once('close', () => this.#connections.delete(socket));
  }

  connections() {
    return { opened: this.#opened, open: this.#connections.size };
  }

  /** Ends every connection but the one that asks. @param {import('node:net').Socket} except */
  endConnections(except) {
    for (const socket of this.#connections.keys()) if (socket !== except) socket.destroy();
  }

  /**
   * @param {Request} req @param {Response} res @param {string} path
   * @returns {Promise<'proceed'|'handled'>}
   */
  async intercept(req, res, path) {
    if (path.startsWith(CONTROL_PREFIX)) return 'proceed';
    const entry = this.log.open(req, path, this.#connections.get(rawSocket(req)) ?? 0);
    const body = new BodyTap(req);
    const answer = new AnswerTap(res);
    /** @type {string|undefined} how a rule ended the request, where one did */
    let ended;
    res.once('close', () => {
      entry.bodyBytes = body.bytes;
      this.log.close(entry, answer, ended ?? answer.outcome ?? (res.writableFinished ? 'sent' : 'aborted'));
    });

    const action = this.rules.take(entry.method, path);
    if (!action) return 'proceed';
    entry.fault = true;
    const reset = () => {
      ended = 'reset';
      const socket = rawSocket(req);
      if ('resetAndDestroy' in socket) socket.resetAndDestroy();
      else /** @type {any} */ (socket).destroy();
    };
    const close = () => {
      ended = 'closed';
      req.socket.destroy();
    };

    if (action.reset) return reset(), 'handled';
    if (action.close) return close(), 'handled';
    if (action.stall) {
      ended = 'stalled';
      // Reading on, so that a client that gives up is noticed.
      req.resume();
      return 'handled';
    }
    if (action.stallMs !== undefined && action.stallAfterBytes === undefined) {
      await new Promise((resolve) => setTimeout(resolve, action.stallMs));
    }
    if (action.resetAfterBytes !== undefined) body.cutAfter(action.resetAfterBytes, reset);
    if (action.closeAfterBytes !== undefined) body.cutAfter(action.closeAfterBytes, close);
    if (action.stallAfterBytes !== undefined) body.stallAfter(action.stallAfterBytes, action.stallMs);
    if (action.throttleBytesPerSecond !== undefined) body.throttle(action.throttleBytesPerSecond);
    if (changesAnswer(action)) answer.alter(action);
    if (action.status === undefined) return 'proceed';
    await answerInstead(req, res, action);
    return 'handled';
  }
}

/** @param {import('./faultRules.js').Action} action */
function changesAnswer(action) {
  return (
    action.swallowAnswer ||
    action.missingOffset ||
    [action.cutAnswerAfterBytes, action.wrongOffset, action.answerStatus, action.answerBody, action.answerHeaders,
      action.answerDelayMs].some((value) => value !== undefined)
  );
}

/** @param {Request} req @param {Response} res @param {import('./faultRules.js').Action} action */
async function answerInstead(req, res, action) {
  const { status = 500, body, rawBody, headers = {}, readBody = true } = action;
  if (readBody) {
    // A client that waits for leave to send its body is refused without it, as by a real server.
    if (req.headers.expect === undefined) await drained(req);
  }
  const text = rawBody ?? (body === undefined ? '' : JSON.stringify(body));
  const type = body === undefined ? {} : { 'Content-Type': 'application/json' };
  res.writeHead(status, { ...type, ...(status === 204 ? {} : { 'Content-Length': Buffer.byteLength(text) }), ...headers });
  res.end(req.method === 'HEAD' || status === 204 ? undefined : text);
}

/** @param {Request} req @returns {Promise<void>} */
function drained(req) {
  return new Promise((resolve) => {
    req.once('end', () => resolve());
    req.once('error', () => resolve());
    req.resume();
  });
}

/** Under TLS the request's socket is the encrypted stream over the real one. @param {Request} req */
function rawSocket(req) {
  return /** @type {import('node:net').Socket} */ (/** @type {any} */ (req.socket)._parent ?? req.socket);
}
