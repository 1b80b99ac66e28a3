// The real programs, as a user starts them: the emulator of the service on its sample albums, and
// the player with its plug-in, each on free loopback ports and with folders of their own.
//   TAVU_EMULATOR, TAVU_PLAYER  the programs; the player finds its plug-in by itself
//   TAVU_SAMPLES                where the sample albums are, or will be made
import { spawn } from 'node:child_process';
import { mkdtempSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { createInterface } from 'node:readline';

/** Sounds run at their own speed and are heard by nobody. */
const silentOutput = 'audioconvert ! fakesink sync=true';
const startMs = 90000; // the emulator may have to make its albums first
const endMs = 10000;
const keptLines = 40;

/** A program, its last words, and the line that tells that it is ready. */
class Program {
  constructor(file, options) {
    this.last = [];
    this.child = spawn(file, options, { stdio: ['ignore', 'pipe', 'pipe'] });
    this.ended = new Promise((done) => {
      this.child.once('close', done);
    });
    this.lines = ['stdout', 'stderr'].map((name) =>
      createInterface({ input: this.child[name] }).on('line', (line) => this.keep(line)),
    );
  }

  keep(line) {
    this.last = [...this.last, line].slice(-keptLines);
  }

  /** The first line of its output that `wanted` takes something out of. */
  async says(wanted) {
    let timer;
    const said = new Promise((resolve, reject) => {
      const fail = (why) => reject(new Error(`${why}:\n${this.last.join('\n')}`));
      timer = setTimeout(() => fail('not ready in time'), startMs);
      this.ended.then((code) => fail(`ended with ${code}`));
      this.lines[0].on('line', (line) => {
        const found = wanted(line);
        if (found) resolve(found);
      });
    });
    return said.finally(() => clearTimeout(timer));
  }

  async end() {
    const hard = setTimeout(() => this.child.kill('SIGKILL'), endMs);
    this.child.kill();
    await this.ended;
    clearTimeout(hard);
  }
}

const ready = (line) => {
  if (!line.startsWith('{')) return null;
  const description = JSON.parse(line);
  return description.ready ? description : null;
};

const pageAddress = (line) => /^tavu-player is ready: (http:\S+?)\/?$/.exec(line)?.[1];

function playerOptions(service, folder, more) {
  const secret = join(folder, 'secret');
  writeFileSync(secret, 'emulator-secret\n', { mode: 0o600 });
  const toEmulator = (host) => `${host}:443:127.0.0.1:${service.tlsPort}`;
  const settings = {
    'service.base-url': service.baseUrl,
    'service.device-code-url': service.deviceCodeUrl,
    'service.token-url': service.tokenUrl,
    'service.authorization-url': service.authorizationUrl,
    'service.client-id': service.clientId,
    'service.client-secret-file': secret,
    'service.domain-suffix': service.domainSuffix,
    'service.ca-file': service.caFile,
    'service.connect-to': service.hosts.map(toEmulator).join(' '),
    'player.state-folder': join(folder, 'player'),
    'player.output': silentOutput,
    'player.mpris': 'false',
    'control.port': '0',
    ...more,
  };
  const pairs = Object.entries(settings).map(([name, value]) => `${name}=${value}`);
  return ['--config', '/dev/null', ...pairs.flatMap((pair) => ['-o', pair])];
}

/**
 * Both programs, running: { url, control, service, close }: the addresses of the player, the fault
 * dial and the service. `emulator` holds further options of the one, `settings` further settings of
 * the other.
 */
export async function startPrograms({
  pageSize = 8,
  autoApprove = false,
  emulator: options = [],
  settings = {},
} = {}) {
  const folder = mkdtempSync(join(tmpdir(), 'tavu-'));
  const running = [];
  const close = async () => {
    for (const program of running.reverse()) await program.end();
    rmSync(folder, { recursive: true, force: true });
  };
  const start = (file, options) => {
    const program = new Program(file, options);
    running.push(program);
    return program;
  };
  try {
    const emulator = start(process.env.TAVU_EMULATOR, [
      ...['--state', join(folder, 'emulator'), '--samples', process.env.TAVU_SAMPLES],
      ...['--page-size', String(pageSize), '--poll-interval', '1', '--seed', '1'],
      ...(autoApprove ? ['--auto-approve'] : []),
      ...options,
    ]);
    const service = await emulator.says(ready);
    const player = start(process.env.TAVU_PLAYER, playerOptions(service, folder, settings));
    const url = await player.says(pageAddress);
    return { url, control: service.control, service: service.baseUrl, close };
  } catch (error) {
    await close();
    throw error;
  }
}

/** What the emulator's sample albums are called, as trails of scenario.mjs. */
export const sampleTrails = {
  album: ['Albums', 'Night Trains'],
  more: ['Tracks'],
  station: ['Stations', 'Folk Station'],
  error: ['Messages', 'A song outside your plan'],
  ask: ['Messages', 'A song that asks where to play'],
  search: 'Night Trains',
};
