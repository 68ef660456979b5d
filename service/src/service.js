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
import { CaptureLocks } from './storage/captureLocks.js';
import { DiscardObjects } from './storage/discardObjects.js';
import { addDiscardTusRoutes } from './storage/discardTusRoutes.js';
import { FileObjects } from './storage/fileObjects.js';
import { Findings } from './storage/findings.js';
import { Grants } from './storage/grants.js';
import { addPutRoutes } from './storage/putRoutes.js';
import { Removals } from './storage/removals.js';
import { Signer } from './storage/signer.js';
import { addTusRoutes } from './storage/tusRoutes.js';
import { Library } from './store/library.js';
import { ServerLock } from './store/serverLock.js';
import { newSecret } from './store/tokens.js';
import { addTestRoutes } from './testing/testRoutes.js';
import { Traffic } from './testing/traffic.js';
import { sendFailurePage } from './web/failurePage.js';
import { signInAddress } from './web/loginPages.js';
import { addWebRoutes } from './web/webRoutes.js';

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

/**
 * @typedef {object} Listening
 * @property {string} url
 * @property {string} [signInUrl] makes the first browser that opens it the owner's, where there is no password
 * @property {string} [controlKey] test mode's, for this run
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
  /** @type {string|undefined} */
  #controlKey;

  /** Use `open`. @param {ServiceOptions} options @param {Library} library @param {string} signingSecret */
  constructor(options, library, signingSecret) {
    this.#options = options;
    this.config = { ...defaultConfig(), ...options.config };
    this.pairing = /** @type {import('./store/library.js').PairingOptions} */ (options.pairing);
    this.log = new Log({ quiet: options.quiet });
    this.library = library;
    this.#lock = new ServerLock(library.dir.lock);
    this.signer = new Signer(signingSecret);
    this.grants = new Grants(this.signer, this.config);
    this.captureLocks = new CaptureLocks();
    this.findings = new Findings(library, this.log);
    this.storesBytes = !options.discard;
    const discarded = new DiscardObjects();
    /** @type {FileObjects|DiscardObjects} */
    this.objects = options.discard ? discarded : new FileObjects(library.dir);
    this.removals = new Removals(this);
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
      this.#controlKey = newSecret('vct_');
      addTestRoutes(this.#router, this, this.#traffic, this.#controlKey);
    }
  }

  /** @param {ServiceOptions} options */
  static async open(options) {
    const pairing = { lifetimeMs: 600_000, pollIntervalMs: 2_000, ...options.pairing };
    const library = await Library.open(options.data, pairing);
    return new Service({ ...options, pairing }, library, await library.settings.signingSecret());
  }

  /** @returns {Promise<Listening>} */
  async start() {
    const { host, port, publicUrl, tls } = this.#options;
    const listening = await this.#http.listen(host, port);
    const name = host.includes(':') ? `[${host}]` : host;
    const origin = new URL(publicUrl ?? `${tls ? 'https' : 'http'}://${name}:${listening}`);
    this.#origin = origin.origin;
    this.#hostGuard = new HostGuard(origin);
    if (isLoopbackName(host)) this.#hostGuard.allowLoopbackPort(listening);
    await this.library.settings.setOrigin(this.#origin);
    this.findings.resume();
    this.#housekeeping.start();
    return {
      url: this.#origin,
      ...(this.ownerPassword === undefined ? { signInUrl: await signInAddress(this.library, this.#origin) } : {}),
      ...(this.#controlKey === undefined ? {} : { controlKey: this.#controlKey }),
    };
  }

  async stop() {
    this.#housekeeping.stop();
    await this.#http.close();
    await this.library.close();
    this.#lock.release();
  }

  /** @param {import('node:http').IncomingMessage} req @param {import('node:http').ServerResponse} res */
  async #onRequest(req, res) {
    // Whoever leaves in the middle of a request is no failure of ours, at whatever moment.
    req.on('error', () => {});
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
