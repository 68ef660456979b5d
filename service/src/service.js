// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { addCaptureRoutes } from './api/captureRoutes.js';
import { defaultConfig } from './config.js';
import { Housekeeping } from './housekeeping.js';
import { sendJson } from './http/answers.js';
import { HostGuard, isLoopbackName } from './http/hostGuard.js';
import { toHttpError } from './http/httpError.js';
import { HttpServer } from './http/httpServer.js';
import { Log } from './http/log.js';
import { Router } from './http/router.js';
import { addPairingRoutes } from './pairing/pairingRoutes.js';
import { Checksums } from './storage/checksums.js';
import { DiscardObjects } from './storage/discardObjects.js';
import { addDiscardTusRoutes } from './storage/discardTusRoutes.js';
import { FileObjects } from './storage/fileObjects.js';
import { Grants } from './storage/grants.js';
import { addPutRoutes } from './storage/putRoutes.js';
import { Signer } from './storage/signer.js';
import { addTusRoutes } from './storage/tusRoutes.js';
import { Library } from './store/library.js';
import { ServerLock } from './store/serverLock.js';
import { addTestRoutes } from './testing/testRoutes.js';
import { Traffic } from './testing/traffic.js';
import { addWebRoutes } from './web/webRoutes.js';
import { sendFailurePage } from './web/failurePage.js';

/** An answer was given before the body was read: how long the rest may still trickle in. */
const LINGER_MS = 10_000;

/**
 * @typedef {object} ServiceOptions
 * @property {string} data folder
 * @property {string} host
 * @property {number} port 0 for any free one
 * @property {string} [publicUrl] where people reach it, when that is not where it listens
 * @property {{cert: string, key: string}} [tls]
 * @property {string} [ownerPassword]
 * @property {boolean} [testMode]
 * @property {boolean} [discard]
 * @property {boolean} [quiet]
 * @property {Partial<import('./config.js').Config>} [config]
 * @property {Partial<{lifetimeMs: number, pollIntervalMs: number}>} [pairing]
 */

/** The running service: everything it is made of, put together once. */
export class Service {
  #options;
  #lock;
  #http;
  #housekeeping;
  #router = new Router();
  #origin = '';
  /** @type {HostGuard|undefined} */
  #hostGuard;
  /** @type {Traffic|undefined} */
  #traffic;

  /** @param {ServiceOptions} options */
  constructor(options) {
    this.#options = options;
    this.config = { ...defaultConfig(), ...options.config };
    this.pairing = { lifetimeMs: 600_000, pollIntervalMs: 2_000, ...options.pairing };
    this.log = new Log({ quiet: options.quiet });
    this.library = new Library(options.data, this.pairing);
    this.#lock = new ServerLock(this.library.dir.lock);
    this.signer = new Signer(this.library.settings.signingSecret());
    this.grants = new Grants(this.signer, this.config);
    this.checksums = new Checksums(this.library, this.log);
    this.storesBytes = !options.discard;
    const discarded = new DiscardObjects();
    /** @type {FileObjects|DiscardObjects} */
    this.objects = options.discard ? discarded : new FileObjects(this.library.dir);
    this.#housekeeping = new Housekeeping(this);
    this.ownerPassword = options.ownerPassword;
    this.origin = () => this.#origin;

    addCaptureRoutes(this.#router, this);
    addPairingRoutes(this.#router, this);
    addPutRoutes(this.#router, this);
    if (options.discard) addDiscardTusRoutes(this.#router, this, discarded);
    else addTusRoutes(this.#router, this);
    addWebRoutes(this.#router, this);

    this.#http = new HttpServer((req, res) => this.#onRequest(req, res), options.tls);
    if (options.testMode) {
      this.#traffic = new Traffic();
      this.#http.onConnection((socket) => this.#traffic?.watchConnection(socket));
      addTestRoutes(this.#router, this, this.#traffic);
    }
  }

  /** @returns {Promise<string>} the base URL */
  async start() {
    const { host, port, publicUrl, tls } = this.#options;
    const listening = await this.#http.listen(host, port);
    const name = host.includes(':') ? `[${host}]` : host;
    const origin = new URL(publicUrl ?? `${tls ? 'https' : 'http'}://${name}:${listening}`);
    this.#origin = origin.origin;
    this.#hostGuard = new HostGuard(origin);
    if (isLoopbackName(host)) this.#hostGuard.allowLoopbackPort(listening);
    this.checksums.resume();
    this.#housekeeping.start();
    return this.#origin;
  }

  async stop() {
    this.#housekeeping.stop();
    await this.#http.close();
    this.#lock.release();
    this.library.close();
  }

  /** @param {import('node:http').IncomingMessage} req @param {import('node:http').ServerResponse} res */
  async #onRequest(req, res) {
    const startedAt = performance.now();
    const path = (req.url ?? '/').split('?')[0];
    res.once('close', () => {
      const outcome = res.writableFinished ? res.statusCode : 'aborted';
      this.log.info(`${req.method} ${path} ${outcome} ${Math.round(performance.now() - startedAt)} ms`);
    });
    try {
      if (this.#traffic && (await this.#traffic.intercept(req, res, path)) === 'handled') return;
      this.#hostGuard?.check(req);
      const url = new URL(`http://host${req.url}`);
      const { handler, params } = this.#router.find(req.method ?? 'GET', url.pathname);
      await handler({ req, res, url, params });
    } catch (error) {
      this.#answerFailure(req, res, path, error);
    }
  }

  /**
   * @param {import('node:http').IncomingMessage} req @param {import('node:http').ServerResponse} res
   * @param {string} path @param {unknown} error
   */
  #answerFailure(req, res, path, error) {
    if (req.destroyed && !req.complete) return;
    const failure = toHttpError(error);
    if (failure.status >= 500) this.log.error(`${req.method} ${path}: ${/** @type {any} */ (error)?.stack ?? error}`);
    if (res.headersSent) {
      res.destroy();
      return;
    }
    if (wantsPage(req, path)) sendFailurePage(req, res, failure);
    else sendJson(res, failure.status, failure.body, failure.headers);
    if (!req.complete) setTimeout(() => req.complete || req.destroy(), LINGER_MS).unref();
  }
}

/** @param {import('node:http').IncomingMessage} req @param {string} path */
function wantsPage(req, path) {
  return !/^\/(v1|storage|library|test)\//.test(path) && (req.headers.accept ?? '').includes('text/html');
}
