// A house: the emulator of the service on its sample albums, and the player that is set up for it.
//   TAVU_EMULATOR, TAVU_PLAYER  the programs; the player finds its plug-in by itself
//   TAVU_SAMPLES                where the sample albums are, or will be made
import assert from 'node:assert/strict';
import { mkdirSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { Program, moment, turnedClock } from './program.mjs';

export const State = { idle: 0, buffering: 1, playing: 2, paused: 3 };

/** Sounds run at their own speed and are heard by nobody. */
const realTime = 'audioconvert ! fakesink sync=true';

const gap = 'BUFFER_UNDERFLOW';
const inWords = ({ report }) => `${report.event} ${report.reason}`;

const readyLine = (said) => {
  const line = said.split('\n').find((text) => text.startsWith('{"') && text.includes('"ready":'));
  return line && JSON.parse(line);
};
const address = (said) => /tavu-player is ready: (http:\S+?)\/?\n/.exec(said)?.[1];

export class House {
  /**
   * `emulator`: further options of it. `settings`: further settings of the player. `signedIn`: false
   * leaves the login to the test. `speed`: so many times faster than the world's do the clocks of
   * both programs go; sound does not follow them. `playerTime`: how the player's clocks go, as the
   * variables of libfaketime say it. `playerEnv`: further variables of the player's environment.
   */
  static async open({ emulator = [], settings = {}, signedIn = true, speed = 1, playerTime, playerEnv } = {}) {
    const house = new House(settings, speed, playerTime, playerEnv);
    try {
      await house.startEmulator(emulator);
      await house.startPlayer();
      if (signedIn) await house.signIn();
      return house;
    } catch (error) {
      await house.close();
      throw error;
    }
  }

  constructor(settings, speed, playerTime, playerEnv) {
    this.more = settings;
    this.playerEnv = playerEnv;
    this.speed = speed;
    this.time = speed === 1 ? undefined : { FAKETIME: `+0 x${speed}` };
    this.playerTime = playerTime ?? this.time;
    this.folder = mkdtempSync(join(tmpdir(), 'tavu-'));
    this.stateFolder = join(this.folder, 'player');
    mkdirSync(this.stateFolder, { mode: 0o700 });
    this.logFile = join(this.folder, 'player.log');
  }

  async close() {
    await this.player?.stop();
    await this.emulator?.stop();
    rmSync(this.folder, { recursive: true, force: true });
  }

  /** Started again it is reached as before, and takes the same options unless told others. */
  async startEmulator(options = this.emulatorOptions) {
    this.emulatorOptions = options;
    const ports = this.service
      ? ['--http-port', String(this.service.httpPort), '--tls-port', String(this.service.tlsPort)]
      : [];
    this.emulator = new Program(process.env.TAVU_EMULATOR, [
      ...['--state', join(this.folder, 'emulator'), '--samples', process.env.TAVU_SAMPLES],
      ...['--poll-interval', '1', '--seed', '1', '--key-headers-every', '0'],
      ...ports, ...options,
    ], this.time && turnedClock(process.env.TAVU_EMULATOR, this.time));
    this.service = await this.emulator.says(readyLine);
    await this.until(async () => (await this.emu('GET', 'status')).scan === 'done', 'the scan');
  }

  settings() {
    const { service, folder } = this;
    const secret = join(folder, 'secret');
    writeFileSync(secret, 'emulator-secret\n', { mode: 0o600 });
    const mappings = [
      ...service.hosts.map((host) => `${host}:443:127.0.0.1:${service.tlsPort}`),
      ...Object.entries(service.hostilePorts ?? {}).map(([host, port]) => `${host}:443:127.0.0.1:${port}`),
    ];
    return {
      'service.base-url': service.baseUrl,
      'service.device-code-url': service.deviceCodeUrl,
      'service.token-url': service.tokenUrl,
      'service.authorization-url': service.authorizationUrl,
      'service.client-id': service.clientId,
      'service.client-secret-file': secret,
      'service.domain-suffix': service.domainSuffix,
      'service.ca-file': service.caFile,
      'service.connect-to': mappings.join(' '),
      'player.state-folder': this.stateFolder,
      'player.output': realTime,
      'player.mpris': 'false',
      'player.network-file': join(this.folder, 'network'),
      'control.port': '0',
      'log.file': this.logFile,
      'log.level': 'debug',
      ...this.more,
    };
  }

  async startPlayer(more = {}) {
    Object.assign(this.more, more);
    const pairs = Object.entries(this.settings()).map(([name, value]) => `${name}=${value}`);
    this.player = new Program(process.env.TAVU_PLAYER,
      ['--config', '/dev/null', ...pairs.flatMap((pair) => ['-o', pair])],
      { ...this.playerEnv, ...(this.playerTime && turnedClock(process.env.TAVU_PLAYER, this.playerTime)) });
    this.url = await this.player.says(address);
  }

  // The player, as its faces see it.

  /** The answer to a request, its status and its time on the house's clocks, ms. */
  async ask(method, path, body) {
    const started = performance.now();
    const answer = await fetch(`${this.url}/api/v1/${path}`, {
      method,
      headers: method === 'POST' ? { 'content-type': 'application/json' } : {},
      body: method === 'POST' ? JSON.stringify(body ?? {}) : undefined,
    });
    const json = await answer.json();
    return { status: answer.status, json, ms: (performance.now() - started) * this.speed };
  }

  async told(method, path, body) {
    const answer = await this.ask(method, path, body);
    assert.equal(answer.status, 200, `${path}: ${JSON.stringify(answer.json)}`);
    return answer.json;
  }

  state() { return this.told('GET', 'state'); }
  async now() { return (await this.state()).player; }
  async login() { return (await this.state()).login.state; }
  async messages() { return (await this.told('GET', 'messages')).messages; }

  browse(path = '', from = 0, to = 49) {
    return this.ask('GET', `rows?path=${encodeURIComponent(path)}&from=${from}&to=${to}`);
  }

  async rows(path) {
    const answer = await this.browse(path);
    assert.equal(answer.status, 200, JSON.stringify(answer.json));
    return answer.json.rows;
  }

  /** The row at the end of a trail of titles. */
  async row(...titles) {
    let row = { path: '' };
    for (const title of titles) {
      const rows = await this.rows(row.path);
      row = rows.find((candidate) => candidate.title?.startsWith(title));
      assert.ok(row, `no row "${title}"`);
    }
    return row;
  }

  play(row) { return this.ask('POST', 'play', { ref: row.ref }); }
  command(name, body) { return this.ask('POST', `player/${name}`, body); }

  /** Waits until the function's value holds; `what` is named when it does not come. */
  async until(holds, what, ms = 30000) {
    const end = performance.now() + ms;
    for (;;) {
      const value = await holds();
      if (value) return value;
      if (performance.now() > end) assert.fail(`waited in vain for ${what}`);
      await moment();
    }
  }

  waitForState(state, ms) {
    return this.until(async () => {
      const player = await this.now();
      return player.state === state && player;
    }, `state ${state}`, ms);
  }

  async askForCode() {
    await this.told('POST', 'login/start');
    return this.until(async () => {
      const { login } = await this.state();
      // Where clocks go faster, a short stop of the machine ends a connection's time.
      if (login.state === 'failed' && this.speed > 1) await this.told('POST', 'login/start');
      return login.state === 'waiting' && login;
    }, 'a code');
  }

  async signIn() {
    const { userCode } = await this.askForCode();
    await this.emu('POST', 'login/approve', { user_code: userCode });
    await this.signedIn();
  }

  async signedIn() {
    await this.until(async () => (await this.login()) === 'loggedIn', 'the login');
    await this.until(async () => {
      const { status, json } = await this.browse();
      return status === 200 && json.rows[0]?.type === 1;
    }, 'the service\'s root');
  }

  /** Tells the player that there is a network, or none. */
  setNetwork(there) { writeFileSync(join(this.folder, 'network'), there ? 'up\n' : 'down\n'); }

  // The emulator.

  async emu(method, path, body) {
    const answer = await fetch(`${this.service.control}${path}`, {
      method,
      headers: body === undefined ? {} : { 'content-type': 'application/json' },
      body: body === undefined ? undefined : JSON.stringify(body),
    });
    const json = await answer.json();
    assert.equal(answer.status, 200, `${path}: ${JSON.stringify(json)}`);
    return json;
  }

  /** Rules for the dial, taken in their order. */
  fault(...rules) { return this.emu('POST', 'faults', rules); }
  lift() { return this.emu('DELETE', 'faults'); }

  /** Where the ledger ends now. */
  async mark() { return (await this.emu('GET', 'ledger?limit=1')).serial; }
  async ledger(kind, since = 0) {
    return (await this.emu('GET', `ledger?kind=${kind}&since=${since}`)).entries;
  }
  /** Reports of plays as the ledger has them. Those of gaps are left out: a busy machine makes some. */
  async playReports(since = 0) {
    return (await this.ledger('report', since)).filter(({ report }) => report.reason !== gap);
  }
  async reports(since = 0) { return (await this.playReports(since)).map(inWords); }
  async gapReports(since = 0) {
    return (await this.ledger('report', since)).map(inWords).filter((words) => words.endsWith(gap));
  }

  /** The player's log so far. */
  log() {
    try {
      return readFileSync(this.logFile, 'utf8');
    } catch {
      return '';
    }
  }
}
