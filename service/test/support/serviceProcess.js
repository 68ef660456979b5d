// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { spawn } from 'node:child_process';
import { once } from 'node:events';
import { mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { createInterface } from 'node:readline';

export const BIN = path.join(import.meta.dirname, '../../bin/vantrell-service');

/** The service as its users run it: a process of its own, on a folder of its own. */
export class ServiceProcess {
  #child;

  /** @param {string[]} args @param {{data?: string, env?: Record<string, string>}} [options] */
  constructor(args = [], { data = mkdtempSync(path.join(tmpdir(), 'vantrell-service-')), env = {} } = {}) {
    this.data = data;
    this.args = args;
    this.url = '';
    this.signInUrl = '';
    this.controlKey = '';
    this.stderr = '';
    this.#child = spawn(process.execPath, [BIN, 'serve', '--data', data, '--port', '0', ...args], {
      stdio: ['ignore', 'pipe', 'pipe'],
      env: { ...process.env, ...env },
    });
    this.#child.stderr.on('data', (text) => {
      this.stderr += text;
    });
  }

  /** @param {string[]} [args] @param {{data?: string, env?: Record<string, string>}} [options] */
  static async start(args, options) {
    const service = new ServiceProcess(args, options);
    const lines = createInterface({ input: service.#child.stdout });
    const [line] = await Promise.race([
      once(lines, 'line'),
      once(service.#child, 'exit').then(() => {
        throw new Error(`the service did not start: ${service.stderr}`);
      }),
    ]);
    Object.assign(service, JSON.parse(line));
    return service;
  }

  /** @param {NodeJS.Signals} [signal] @returns {Promise<number|null>} the exit code */
  async stop(signal = 'SIGTERM') {
    if (this.#child.exitCode !== null || this.#child.signalCode !== null) return this.#child.exitCode;
    const exited = once(this.#child, 'exit');
    this.#child.kill(signal);
    const [code] = await exited;
    return code;
  }

  get pid() {
    return this.#child.pid;
  }

  /** The same folder under a new process. */
  restart() {
    return ServiceProcess.start(this.args, { data: this.data });
  }

  async dispose() {
    await this.stop('SIGKILL');
    rmSync(this.data, { recursive: true, force: true });
  }

  /**
   * One exchange of JSON.
   *
   * @param {string} method @param {string} pathname @param {unknown} [body] @param {Record<string, string>} [headers]
   * @returns {Promise<{status: number, body: any, headers: Headers}>}
   */
  async call(method, pathname, body, headers = {}) {
    const answer = await fetch(this.url + pathname, {
      method,
      headers: {
        ...(body === undefined ? {} : { 'Content-Type': 'application/json' }),
        ...(pathname.startsWith('/test/') ? { 'X-Control-Key': this.controlKey } : {}),
        ...headers,
      },
      body: body === undefined ? undefined : JSON.stringify(body),
      redirect: 'manual',
    });
    const text = await answer.text();
    const isJson = (answer.headers.get('content-type') ?? '').includes('json');
    return { status: answer.status, body: isJson && text ? JSON.parse(text) : text, headers: answer.headers };
  }

  /** Makes a browser the owner's, which works once. @returns {Promise<string>} its cookie */
  async signIn() {
    const answer = await fetch(this.signInUrl, { redirect: 'manual' });
    return answer.headers.get('set-cookie')?.split(';')[0] ?? '';
  }

  /** A key and calls made with it. @param {string} [account] */
  async client(account) {
    const { body } = await this.call('POST', '/test/keys', account === undefined ? {} : { account });
    return new Client(this, body.apiKey);
  }
}

/** An application connected to a service. */
export class Client {
  /** @param {ServiceProcess} service @param {string} apiKey */
  constructor(service, apiKey) {
    this.service = service;
    this.apiKey = apiKey;
  }

  /** @param {string} method @param {string} pathname @param {unknown} [body] */
  call(method, pathname, body) {
    return this.service.call(method, pathname, body, { Authorization: `Bearer ${this.apiKey}` });
  }

  async projectId() {
    return (await this.call('GET', '/v1/capture/projects')).body.projects[0].id;
  }

  /** @param {Record<string, unknown>} facts what differs from a plain small recording */
  async sign(facts = {}) {
    return this.call('POST', '/v1/capture/sign', {
      projectId: facts.projectId ?? (await this.projectId()),
      kind: 'video',
      mime: 'video/quicktime',
      bytes: 1000,
      durationMs: 1500,
      name: 'Screen recording',
      meta: false,
      captureId: crypto.randomUUID(),
      ...facts,
    });
  }

  /** @param {string} assetId */
  confirm(assetId) {
    return this.call('POST', `/v1/capture/${assetId}/confirm`);
  }

  /** @param {string} assetId */
  async capture(assetId) {
    return (await this.call('GET', `/library/captures/${assetId}`)).body;
  }
}
