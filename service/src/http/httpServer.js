// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { readFileSync } from 'node:fs';
import http from 'node:http';
import https from 'node:https';

import { holdContinue } from './bodies.js';

/** Silence on a connection, not slowness: a large body may take hours as long as it moves. */
const IDLE_TIMEOUT_MS = 180_000;
const HEADERS_TIMEOUT_MS = 30_000;
const KEEP_ALIVE_MS = 75_000;
/** How long a clean stop waits for requests in flight. */
const DRAIN_MS = 5_000;

/** The listening socket and the life of its connections; what a request means is its callback's business. */
export class HttpServer {
  #server;

  /**
   * @param {(req: http.IncomingMessage, res: http.ServerResponse) => void} onRequest
   * @param {{cert: string, key: string}} [tls] file names
   */
  constructor(onRequest, tls) {
    const limits = {
      headersTimeout: HEADERS_TIMEOUT_MS,
      requestTimeout: 0,
      keepAliveTimeout: KEEP_ALIVE_MS,
      // Uploads come in large pieces; fewer, larger reads.
      highWaterMark: 256 * 1024,
    };
    this.#server = tls
      ? https.createServer({ ...limits, cert: readFileSync(tls.cert), key: readFileSync(tls.key) })
      : http.createServer(limits);
    this.#server.timeout = IDLE_TIMEOUT_MS;
    this.#server.on('request', onRequest);
    this.#server.on('checkContinue', (req, res) => {
      holdContinue(req);
      onRequest(req, res);
    });
    this.#server.on('clientError', (error, socket) => {
      if (socket.writable && /** @type {any} */ (error).code !== 'ECONNRESET') {
        socket.end('HTTP/1.1 400 Bad Request\r\nConnection: close\r\nContent-Length: 0\r\n\r\n');
      } else {
        socket.destroy();
      }
    });
  }

  /** @param {(socket: import('node:net').Socket) => void} listener */
  onConnection(listener) {
    this.#server.on('connection', listener);
  }

  /** @param {string} host @param {number} port @returns {Promise<number>} the port it got */
  async listen(host, port) {
    await new Promise((resolve, reject) => {
      this.#server.once('error', reject);
      this.#server.listen(port, host, () => resolve(undefined));
    });
    return /** @type {import('node:net').AddressInfo} */ (this.#server.address()).port;
  }

  /** Stops taking requests, lets those in flight finish for a moment, then ends them. */
  async close() {
    const closed = new Promise((resolve) => this.#server.close(resolve));
    this.#server.closeIdleConnections();
    const timer = setTimeout(() => this.#server.closeAllConnections(), DRAIN_MS);
    await closed;
    clearTimeout(timer);
  }
}
