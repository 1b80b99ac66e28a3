// Starts that cannot be: each program says in one line what is wrong and what to do, and ends with
// the exit code for it. No start leaves anything behind, and none takes long to be refused.
import assert from 'node:assert/strict';
import { spawn } from 'node:child_process';
import {
  chmodSync, existsSync, mkdirSync, mkdtempSync, readFileSync, rmSync, statSync, writeFileSync,
} from 'node:fs';
import { createServer } from 'node:net';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after, before, test } from 'node:test';
import { moment } from '../support/program.mjs';
import { assertRefused, run } from './support/runs.mjs';

const { TAVU_PLAYER, TAVU_EMULATOR, TAVU_CTL, TAVU_TREE, TAVU_BUILD } = process.env;

let folder;
let held;
let port;
const at = (name) => join(folder, name);

before(async () => {
  folder = mkdtempSync(join(tmpdir(), 'tavu-starts-'));
  mkdirSync(at('empty'));
  held = createServer();
  await new Promise((listening) => { held.listen(0, '127.0.0.1', listening); });
  port = held.address().port;
});
after(() => {
  held?.close();
  rmSync(folder, { recursive: true, force: true });
});

const keep = (name, content, mode = 0o600) => {
  writeFileSync(at(name), content);
  chmodSync(at(name), mode);
  return at(name);
};

// The player.

/** All that the plug-in needs, at a service that nobody asks before the start is refused. */
const complete = {
  'service.base-url': 'https://music.invalid/',
  'service.token-url': 'https://music.invalid/token',
  'service.device-code-url': 'https://music.invalid/device',
  'service.client-id': 'id',
  'player.mpris': 'false',
  'control.port': '0',
  'log.level': 'warn',
};

function player(settings = {}, options = []) {
  const all = { ...complete, 'player.state-folder': at('player'), ...settings };
  const pairs = Object.entries(all).flatMap(([name, value]) => ['-o', `${name}=${value}`]);
  return run(TAVU_PLAYER, ['--config', '/dev/null', ...pairs, ...options]);
}

async function refusesPlayer(code, settings, ...messages) {
  assertRefused(await player(settings), code, ...messages);
}

test('player: arguments that it does not know', async () => {
  for (const [options, message] of [
    [['--wat'], "Unknown option 'wat'. Try --help."],
    [['now'], '"now" is one argument too many. Try --help.'],
    [['--config'], "Missing value after '--config'. Try --help."],
    [['-o'], "Missing value after '-o'. Try --help."],
    [['--verbose=3'], "Unexpected value after '--verbose'. Try --help."],
    [['-o', 'x'], 'The command line: "x" is not "section.name=value".'],
    [['-o', 'control.prot=1'], 'there is no setting "control.prot"; the nearest is "control.port".'],
    [['-o', 'x\x1b[2J=1'], 'there is no setting'],
  ]) assertRefused(await run(TAVU_PLAYER, options), 2, 'tavu-player: ', message);
});

test('player: settings with values that cannot be', async () => {
  for (const [name, value, wanted] of [
    ['control.port', '65536', 'a port from 0 to 65535'],
    ['control.address', 'here', 'an IP address, such as 127.0.0.1'],
    ['player.volume', '101', 'a number from 0 to 100'],
    ['player.mpris', 'yes', 'true or false'],
    ['service.base-url', 'music', 'a http or https URL with a host'],
    ['service.connect-to', 'music:443', 'host:port:address:port'],
    ['log.level', 'loud', 'trace, debug, info, warn, error or off'],
  ]) await refusesPlayer(2, { [name]: value }, `"${name}" must be ${wanted}`, `not "${value}".`);
});

test('player: settings files that are none', async () => {
  const remedy = '"tavu-player --print-config" prints a fresh file.';
  const config = (file) => run(TAVU_PLAYER, ['--config', file]);
  assertRefused(await config(at('nowhere')), 2, `${at('nowhere')} cannot be read: No such file`, remedy);
  assertRefused(await config(folder), 2, `${folder} cannot be read`, remedy);
  assertRefused(await config(TAVU_PLAYER), 2, 'this is not UTF-8 text', remedy);
  assertRefused(await config('/dev/zero'), 2, 'this is not UTF-8 text');
  const content = '[service]\nbase-url = https://a.example/\n\0\0\x1b[31m';
  const damaged = keep('damaged.conf', content);
  assertRefused(await config(damaged), 2, `${damaged}, line 3: this is not UTF-8 text.`, remedy);
  assert.equal(readFileSync(damaged, 'latin1'), content, 'the file is left as it is');
});

test('player: files that hold something else', async () => {
  const text = keep('text', 'no certificate\n');
  await refusesPlayer(6, { 'service.ca-file': at('nowhere') }, 'service.ca-file: ', 'cannot be read',
    'leave service.ca-file empty');
  await refusesPlayer(6, { 'service.ca-file': text }, `${text} holds no certificate.`, 'Name a PEM file');
  await refusesPlayer(6, { 'service.client-secret-file': at('nowhere') }, 'cannot be read',
    'Put the client secret there');
  await refusesPlayer(6, { 'service.client-secret-file': keep('empty-secret', '') },
    'holds no client secret');
  await refusesPlayer(6, { 'service.client-secret-file': keep('open', 'secret', 0o644) },
    'can be read by others; run "chmod 600');
  // Who listens for others asks them for a token.
  const listening = { 'control.address': '0.0.0.0', 'control.port': '0' };
  await refusesPlayer(4, { ...listening, 'control.token-file': keep('token', 'abc\n') },
    'holds no token', 'set control.token-file to another.');
});

test('player: a service that is not set', async () => {
  await refusesPlayer(6, { 'service.client-id': '' }, 'service.client-id is not set.', './run');
});

test('player: folders and files that cannot be written', async () => {
  await refusesPlayer(4, { 'player.state-folder': '/proc/tavu' },
    'The state folder /proc/tavu cannot be made. Set player.state-folder');
  await refusesPlayer(4, { 'player.state-folder': TAVU_PLAYER }, 'is not a folder.');
  // There and owned by the administrator, and yet nobody can make a file in it.
  await refusesPlayer(4, { 'player.state-folder': '/proc' }, 'cannot be written.');
  await refusesPlayer(2, { 'log.file': folder },
    `The log file ${folder} cannot be written (Is a directory). Choose another with log.file`);
});

test('player: plug-ins that are none', async () => {
  await refusesPlayer(1, { 'player.plugin': at('nowhere.so') }, 'does not exist. Set player.plugin');
  await refusesPlayer(1, { 'player.plugin': keep('text.so', 'text') }, 'cannot be loaded');
  await refusesPlayer(1, { 'player.plugin': folder }, 'cannot be loaded');
  const library = join(TAVU_BUILD, 'src/api/core/libtavu_api.so');
  if (existsSync(library))
    await refusesPlayer(1, { 'player.plugin': library }, 'is not a plug-in: it has no function');
});

test('player: a port in use', async () => {
  await refusesPlayer(2, { 'control.port': String(port) }, `Port ${port} of 127.0.0.1 cannot be used`,
    `ss -ltnp 'sport = :${port}'`, 'Choose another with control.port.');
});

// The emulator.

const emulator = (...options) =>
  run(TAVU_EMULATOR, ['--state', at('emulator'), '--samples', process.env.TAVU_SAMPLES, ...options]);

test('emulator: arguments that cannot be', async () => {
  for (const [options, message] of [
    [['--wat'], "Unknown option 'wat'. Try --help."],
    [['--host'], "Missing value after '--host'. Try --help."],
    [['--host', 'a b'], '--host takes a host name, not "a b".'],
    [['--fault', 'effect=wat'], 'there is no effect'],
    [[at('nowhere')], 'Give the folder that holds your music, or none for the sample albums.'],
    [[TAVU_PLAYER], 'is not a folder.'],
    [['/', '/'], 'is one too many.'],
  ]) assertRefused(await emulator(...options), 2, message);
});

test('emulator: ports and addresses that it cannot have', async () => {
  for (const option of ['--http-port', '--tls-port'])
    assertRefused(await emulator(option, String(port)), 2, `Port ${port} of 127.0.0.1 cannot be used`, 'ss -ltnp');
  // An address for documentation, which no machine has.
  assertRefused(await emulator('--listen', '192.0.2.1'), 2, 'No port of 192.0.2.1 can be used',
    '--listen takes an address of this machine.');
});

test('emulator: folders and files that cannot be written', async () => {
  assertRefused(await emulator('--state', '/proc/tavu'), 1, 'cannot be made. Choose another one with --state.');
  assertRefused(await emulator('--state', '/proc'), 1, 'State cannot be kept: /proc/secret',
    'choose another folder with --state.');
  assertRefused(await emulator('--ca-file', '/proc/ca.pem'), 1,
    'The certificate authority cannot be kept: /proc/ca.pem', 'Choose another file with --ca-file.');
  const ready = await emulator('--ready-file', '/proc/ready');
  assert.equal(ready.code, 1);
  assert.match(ready.err, /The ready line cannot be written to \/proc\/ready: .*--ready-file\.\n/);
});

test('emulator: a disk that is full leaves no half an album', async () => {
  const samples = at('samples');
  const result = await run('bash', ['-c',
    `ulimit -f 8; exec "$0" --state "$1" --samples "$2"`, TAVU_EMULATOR, at('small'), samples]);
  assert.equal(result.code, 1, JSON.stringify(result));
  assert.match(result.err, /The sample albums cannot be made: .* Free some space/);
  assert.equal(existsSync(samples), false);
});

// The terminal client, without a player; with one it has tests of its own.

test('ctl: arguments and addresses that cannot be', async () => {
  assertRefused(await run(TAVU_CTL, []), 2, 'tavu-ctl: A command is missing. Run "tavu-ctl --help".');
  assertRefused(await run(TAVU_CTL, ['dance']), 2, 'There is no command "dance".');
  assertRefused(await run(TAVU_CTL, ['--url', 'here', 'status']), 2, 'must be one such as http://');
  assertRefused(await run(TAVU_CTL, ['status'], { env: { TAVU_URL: 'here' } }), 2, 'not "here"');
  assertRefused(await run(TAVU_CTL, ['--url', 'http://127.0.0.1:1', 'status']), 7,
    'No player answers at http://127.0.0.1:1', 'Start it, or name its address with --url.');
});

// All of it in one command.

const start = (options, more) => run(join(TAVU_TREE, 'run'),
  ['--build', TAVU_BUILD, '--state', at('run'), ...options], more);

test('run: arguments that cannot be', async () => {
  const other = 'Give the folder that holds your music, or none';
  for (const [options, message] of [
    [['--wat'], 'There is no option --wat. Try --help.'],
    [['--port'], '--port needs a value. Try --help.'],
    [['--port', '0'], '--port takes a number from 1 to 65535, not "0".'],
    [['--port', '70000'], '--port takes a number from 1 to 65535'],
    [['--port', 'x'], '--port takes a number from 1 to 65535'],
    [['--expires', 'soon'], '--expires takes a number of seconds, not "soon".'],
    [['--log', 'loud'], '--log takes trace, debug, info, warn, error or off'],
    [['--build', folder], `There are no programs in ${folder}.`],
    [[''], 'The name of the music folder is empty.'],
    [['a', 'b'], 'One music folder at a time, please'],
    [[at('nowhere')], `There is no folder ${at('nowhere')}. ${other}`],
    [[TAVU_PLAYER], `is not a folder. ${other}`],
    [[at('empty')], `There is no FLAC, MP3, Ogg, Opus or M4A file in ${at('empty')}. ${other}`],
    [['--port', String(port)], `Port ${port} is in use`],
  ]) assertRefused(await start(options), 2, 'run: ', message);
});

test('run: a folder is where the caller sees it', async () => {
  const result = await start(['empty'], { cwd: folder });
  assertRefused(result, 2, `There is no FLAC, MP3, Ogg, Opus or M4A file in ${at('empty')}.`);
});

test('run: a state folder that cannot be written', async () => {
  for (const state of ['/proc/tavu', TAVU_PLAYER])
    assertRefused(await start(['--state', state]), 4, `The state folder ${state} cannot be made or written.`);
});

/** What ./run says when all is well, and its way to an end. */
class Running {
  constructor(options) {
    this.said = '';
    // A group of its own, as a terminal's is: Ctrl-C goes to all of it.
    this.child = spawn(join(TAVU_TREE, 'run'), ['--build', TAVU_BUILD, ...options],
      { detached: true, stdio: ['ignore', 'pipe', 'pipe'] });
    for (const stream of [this.child.stdout, this.child.stderr]) {
      stream.setEncoding('utf8');
      stream.on('data', (text) => { this.said += text; });
    }
    this.end = new Promise((done) => { this.child.once('close', (code) => { done(code); }); });
  }

  async says(pattern) {
    const until = Date.now() + 60000;
    while (Date.now() < until) {
      const found = pattern.exec(this.said);
      if (found) return found;
      await moment();
    }
    throw new Error(`${pattern} was not said:\n${this.said}`);
  }

  interrupt() { process.kill(-this.child.pid, 'SIGINT'); }
}

test('run: one address, one run on a state, and Ctrl-C ends all of it', async () => {
  const state = at('run one');
  const running = new Running(['--state', state, '--output', 'fakesink', process.env.TAVU_SAMPLES]);
  try {
    const [, page] = await running.says(/The player's page: +(http:\S+)\n/);
    await running.says(/^emulator: Serving \d+ tracks on \d+ albums from /m);
    await running.says(/Ctrl-C ends both\./);
    assert.equal((await fetch(page)).status, 200);
    const [, terminal] = await running.says(/In a second terminal: +(.*)\n/);
    assert.match(terminal, /^TAVU_URL=\S+ \S+\/src\/ctl\/tavu-ctl ls$/);
    const { err, code } = await run('bash', ['-c', terminal], { cwd: TAVU_TREE });
    assert.equal(code, 6, err);
    assertRefused(await start(['--state', state]), 1, `Another ./run uses ${state}. End it, or give`);
    // The next free port, and a folder that others cannot look into.
    assert.equal((await start(['--port', new URL(page).port])).code, 2);
    assert.equal(statSync(state).mode & 0o077, 0);
    running.interrupt();
    assert.equal(await running.end, 0);
    await assert.rejects(fetch(page));
  } finally {
    if (running.child.exitCode === null) process.kill(-running.child.pid, 'SIGKILL');
  }
});

test('run: a rule that the emulator refuses, in its words and with its exit code', async () => {
  const result = await start(['--fault', 'effect=wat']);
  assert.equal(result.code, 2, JSON.stringify(result));
  assert.match(result.err, /^emulator: --fault "effect=wat": there is no effect/m);
  assert.match(result.err, /^run: The emulator of the service has stopped\.$/m);
});
