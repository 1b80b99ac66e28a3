// A stand-in for the player's control API, for developing and testing the web page without sound,
// service or a built program. Start it by hand with
//   node tests/web/mockplayer.mjs --vendor build/debug/src/player/web/vendor --signed-in
import { randomUUID } from 'node:crypto';
import { createReadStream } from 'node:fs';
import { stat } from 'node:fs/promises';
import { createServer } from 'node:http';
import path from 'node:path';
import { fileURLToPath } from 'node:url';

import { pageOf, rootPath, searchPath } from './support/catalogue.mjs';
import { codePictureSvg, coverSvg } from './support/covers.mjs';
import { MockState } from './support/mockstate.mjs';
import { listen } from './support/slowness.mjs';

const here = path.dirname(fileURLToPath(import.meta.url));
const types = {
  '.html': 'text/html; charset=utf-8',
  '.js': 'text/javascript',
  '.css': 'text/css',
  '.svg': 'image/svg+xml',
  '.png': 'image/png',
  '.woff2': 'font/woff2',
  '.webmanifest': 'application/manifest+json',
};
const policy =
  "default-src 'self'; img-src 'self' data:; media-src 'self' blob:; object-src 'none'; " +
  "base-uri 'none'; form-action 'none'; frame-ancestors 'none'";

/**
 * One mock player on a free loopback port. `faults` are what a test sets to make it misbehave,
 * `codeLives` how many seconds the next codes last.
 */
export class MockPlayer {
  constructor({ web, vendor, token = '' }) {
    if (!vendor) throw new Error('Set TAVU_WEB_VENDOR to the folder of the built library files.');
    Object.assign(this, { web, vendor, token });
    this.serial = 0;
    this.streams = new Set();
    this.refs = new Map();
    this.codeLives = [];
    this.faults = { delayMs: 0, refuseEvents: false, failRows: 0 };
    this.calls = [];
    this.ratings = [];
    this.state = new MockState((event, data) => this.emit(event, data));
    this.server = createServer((request, response) => {
      this.answer(request, response).catch((error) => response.destroy(error));
    });
  }

  async listen(port = 0) {
    this.road = await listen(this.server, port);
    this.port = this.road.port;
    this.url = `http://127.0.0.1:${this.port}`;
    return this;
  }

  async close() {
    this.road.close();
    this.dropStreams();
    this.server.closeAllConnections();
    await new Promise((done) => {
      this.server.close(done);
    });
  }

  emit(event, data) {
    this.serial += 1;
    for (const stream of this.streams) this.send(stream, event, data);
  }

  send(stream, event, data) {
    stream.write(`id: ${this.serial}\nevent: ${event}\ndata: ${JSON.stringify(data)}\n\n`);
  }

  dropStreams() {
    for (const stream of this.streams) stream.destroy();
    this.streams.clear();
  }

  /** Lets every request for rows and every command wait until the returned function is called. */
  hold() {
    let release;
    this.faults.held = new Promise((done) => {
      release = done;
    });
    return release;
  }

  async answer(request, response) {
    const url = new URL(request.url, this.url);
    this.calls.push(`${request.method} ${url.pathname}`);
    if (this.faults.mute) return undefined;
    if (url.pathname === '/link') return this.linkPage(request, response, url);
    if (!url.pathname.startsWith('/api/v1/')) return this.file(response, url.pathname);
    const given =
      request.headers.authorization?.replace('Bearer ', '') ?? url.searchParams.get('token');
    if (this.token && given !== this.token)
      return problem(response, 401, 'Not allowed', 'An access code is needed.');
    const name = url.pathname.slice('/api/v1/'.length);
    if (request.method === 'GET') return this.get(name, url, request, response);
    if (request.headers['content-type'] !== 'application/json')
      return problem(response, 415, 'JSON only');
    const body = JSON.parse(await text(request));
    await this.faults.held;
    await wait(this.faults.delayMs);
    return this.post(name, body, response);
  }

  async get(name, url, request, response) {
    if (name === 'events') return this.events(response);
    if (name === 'state') return json(response, this.state.snapshot(this.serial));
    if (name === 'queue') return this.queue(response);
    if (name === 'rows') return this.rows(url, response);
    if (name === 'messages') return json(response, { messages: this.state.messages });
    if (name === 'outputs') return json(response, { outputs: this.state.outputs });
    if (name === 'login') return json(response, this.state.login);
    if (name === 'login/qr.svg') return svg(response, codePictureSvg(this.state.login.userCode));
    if (name.startsWith('artwork/')) return svg(response, coverSvg(Number(name.slice(8))));
    return problem(response, 404, 'Not found');
  }

  events(response) {
    if (this.faults.refuseEvents) return response.destroy();
    response.writeHead(200, { 'Content-Type': 'text/event-stream', 'Cache-Control': 'no-store' });
    this.streams.add(response);
    response.on('close', () => this.streams.delete(response));
    return this.send(response, 'snapshot', this.state.snapshot(this.serial));
  }

  /** Rows with their refs; the mock remembers each row that it has given out, as the player does. */
  async rows(url, response) {
    await this.faults.held;
    await wait(this.faults.delayMs);
    const asked = url.searchParams.get('path') ?? '';
    const [from, to] = ['from', 'to'].map((name) => Number(url.searchParams.get(name)));
    const page = pageOf(asked);
    if (this.faults.failRows > 0 || !page) {
      this.faults.failRows -= 1;
      return problem(
        response,
        502,
        'Unable to browse in to the folder.',
        'The service did not answer.',
      );
    }
    const given = asked || rootPath;
    const rows = page.rows
      .slice(from, to + 1)
      .map((row, i) => this.withRef(row, `${given}#${from + i}`));
    return json(response, { parent: page.parent, rows, from, count: page.rows.length, version: 0 });
  }

  queue(response) {
    const queue = this.state.tellQueue();
    const shown = (row, place) => row && this.withRef(row, `queue/${place}/${row.title}`);
    return json(response, {
      ...queue,
      from: shown(queue.from, 'from'),
      current: shown(queue.current, 'current'),
      next: shown(queue.next, 'next'),
      played: queue.played.map(({ at, row }, i) => ({ at, row: shown(row, i) })),
    });
  }

  withRef(row, ref) {
    this.refs.set(ref, row);
    const { sound, does, ...shown } = row;
    return { ...shown, ref };
  }

  post(name, body, response) {
    const { state } = this;
    const done = (value = {}) => json(response, value);
    const commands = {
      'player/pause': () => state.pause(),
      'player/next': () => state.step(1),
      'player/previous': () => state.step(-1),
      'player/stop': () => state.stop(),
      'player/seek': () => state.moveTo(body.position),
      'player/mode': () => {
        state.mode = body.mode;
        state.told();
      },
      'player/sleep': () => state.setSleep(body),
      'player/volume': () => {
        if (body.volume !== undefined) state.volume = body.volume;
        if (body.mute !== undefined) state.mute = body.mute;
        state.told();
      },
      'login/start': () => state.startLogin(this.url, this.codeLives.shift() ?? 600),
      logout: () => state.logout(),
      outputs: () =>
        state.outputs.forEach((output) => {
          output.selected = output.id === body.id;
        }),
    };
    if (commands[name]) {
      commands[name]();
      return done();
    }
    if (name === 'player/like') return this.rated(true, response);
    if (name === 'player/dislike') return this.rated(false, response);
    if (name === 'search') return done({ path: searchPath(body.text) });
    if (name === 'play') return this.play(body.ref, response);
    if (name === 'rows/activate') return this.activate(body, response);
    return problem(response, 404, 'Not found');
  }

  play(ref, response) {
    const row = this.refs.get(ref);
    const sound = row?.sound;
    if (!sound) return problem(response, 404, 'This row is no longer known.');
    if (sound.kind !== 'refused') {
      this.state.play(sound, sound.kind === 'track' ? null : row);
      return json(response, {});
    }
    const text = pageOf(sound.screen).rows[0].longDescription;
    this.state.addMessage('error', 'Playback failed', text);
    return problem(response, 409, 'Playback failed', text, { result: { path: sound.screen } });
  }

  /** The service's word on a rating: a screen of its own, and a message that is kept. */
  rated(up, response, ofTrack = true) {
    if (ofTrack) this.state.rate(up ? 'up' : 'down');
    const screen = up ? '/amazonMusic/dialog/rated' : '/amazonMusic/dialog/rated-down';
    this.state.addMessage('info', pageOf(screen).rows[0].title, '');
    return json(response, { result: { path: screen } });
  }

  activate({ ref, path: target, role, value }, response) {
    if (this.faults.failActivate) return problem(response, 409, this.faults.failActivate);
    if (role === 'likeIt') {
      this.ratings.push({ path: target, value });
      return this.rated(value, response, false);
    }
    const does = this.refs.get(ref)?.does;
    if (!does) return problem(response, 404, 'This row is no longer known.');
    return json(response, { close: true });
  }

  /** The service's side of the sign-in: one page with one button. */
  linkPage(request, response, url) {
    if (request.method === 'POST') this.state.approve();
    const body =
      request.method === 'POST'
        ? '<p>Done. You can close this page.</p>'
        : `<form method="post"><p>Code ${url.searchParams.get('code') ?? ''}</p><button>Allow</button></form>`;
    response.writeHead(200, { 'Content-Type': types['.html'] });
    response.end(`<!doctype html><html lang="en"><title>Link a player</title>${body}</html>`);
  }

  /** As the built page has it: beside our own files what the build has taken or drawn. */
  fileOf(name) {
    if (name.startsWith('/vendor/')) return path.join(this.vendor, name.slice('/vendor/'.length));
    const folder = name.startsWith('/icons/') && name.endsWith('.png') ? this.vendor : this.web;
    return path.join(folder, name);
  }

  async file(response, pathname) {
    const name = pathname === '/' ? '/index.html' : path.posix.normalize(pathname);
    const file = this.fileOf(name);
    const type = types[path.extname(file)];
    const found = type && (await stat(file).catch(() => null));
    if (!found?.isFile()) return problem(response, 404, 'Not found');
    response.writeHead(200, {
      'Content-Type': type,
      'Content-Security-Policy': policy,
      'Cache-Control': 'no-cache',
      'X-Content-Type-Options': 'nosniff',
    });
    return createReadStream(file).pipe(response);
  }
}

const wait = (ms) =>
  ms > 0
    ? new Promise((done) => {
        setTimeout(done, ms);
      })
    : undefined;

async function text(request) {
  let body = '';
  for await (const part of request) body += part;
  return body || '{}';
}

function json(response, value, status = 200, type = 'application/json') {
  response.writeHead(status, { 'Content-Type': type, 'Cache-Control': 'no-store' });
  response.end(JSON.stringify(value));
}

function problem(response, status, title, detail = '', actionReply) {
  json(
    response,
    { type: 'about:blank', title, status, detail, instance: `urn:uuid:${randomUUID()}`, actionReply },
    status,
    'application/problem+json',
  );
}

function svg(response, picture) {
  response.writeHead(200, { 'Content-Type': types['.svg'] });
  response.end(picture);
}

export const startMock = ({
  web = path.resolve(here, '../../src/player/web'),
  vendor = process.env.TAVU_WEB_VENDOR,
  port = 0,
  ...rest
} = {}) => new MockPlayer({ web, vendor, ...rest }).listen(port);

if (process.argv[1] === fileURLToPath(import.meta.url)) {
  const option = (name, otherwise) => {
    const at = process.argv.indexOf(`--${name}`);
    return at < 0 ? otherwise : process.argv[at + 1];
  };
  const mock = await startMock({
    vendor: option('vendor', process.env.TAVU_WEB_VENDOR),
    port: Number(option('port', 8090)),
  });
  if (process.argv.includes('--signed-in')) mock.state.approve();
  process.stdout.write(`${mock.url}\n`);
}
