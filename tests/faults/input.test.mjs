// What a stranger does wrong while there is something to lose: somebody is signed in, a mode and a
// volume are set, and music plays.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import {
  copyFileSync, mkdirSync, mkdtempSync, readFileSync, readdirSync, renameSync, rmSync, writeFileSync,
} from 'node:fs';
import { join } from 'node:path';
import { after, before, test } from 'node:test';
import { House, State } from '../support/house.mjs';
import { Program } from '../support/program.mjs';
import { assertRefused, run } from './support/runs.mjs';

// No bus, and of all outputs only the one that swallows everything, whatever the machine has.
process.env.DBUS_SESSION_BUS_ADDRESS = 'unix:path=/nowhere/bus';
process.env.GST_PLUGIN_FEATURE_RANK =
  ['alsa', 'pulse', 'pipewire', 'jackaudio', 'oss', 'oss4', 'openal'].map((name) => `${name}sink:NONE`).join();

let house;
let kept;
const tokens = () => readFileSync(join(house.stateFolder, 'tokens.json'), 'utf8');
const state = () => JSON.parse(readFileSync(join(house.stateFolder, 'state.json'), 'utf8'));

before(async () => {
  house = await House.open({ settings: { 'player.mpris': 'true' } });
  await house.command('mode', { mode: 4 });
  await house.command('volume', { volume: 42 });
  assert.equal((await house.play(await house.row('Albums', 'Night Trains'))).status, 200);
  kept = await house.waitForState(State.playing);
});
after(() => house?.close());

/** Login, settings and what plays: as they were. */
async function assertSurvived() {
  assert.equal(house.player.ended, false);
  assert.equal(house.player.findings, '');
  assert.equal(await house.login(), 'loggedIn');
  const now = await house.now();
  assert.equal(now.mode, 4);
  assert.equal(now.volume, 42);
  assert.equal(now.album, kept.album);
  return now;
}

async function assertPlaysOn() {
  await assertSurvived();
  await house.waitForState(State.playing);
  const { position, title } = await house.now();
  await house.until(async () => {
    const now = await house.now();
    return now.title !== title || now.position > position;
  }, 'the music to go on');
}

const messagesFrom = async (source) => (await house.messages()).filter((message) => message.source === source);

/** A further player with the same settings but for these. */
function another(settings) {
  const pairs = Object.entries({ ...house.settings(), ...settings });
  return run(process.env.TAVU_PLAYER,
    ['--config', '/dev/null', ...pairs.flatMap(([name, value]) => ['-o', `${name}=${value}`])]);
}

const limitFiles = (program, bytes) =>
  execFileSync('prlimit', ['--pid', String(program.pid), `--fsize=${bytes}:unlimited`]);

/** What the state folder holds; nothing while a file in it is being written. */
function wholeFiles() {
  const names = readdirSync(house.stateFolder).sort();
  return names.some((name) => /\.[A-Za-z0-9]{6}$/.test(name)) ? null : names;
}

/** From here on the player can write nothing more, and has written what it had begun to. */
const fillDisk = () => house.until(() => {
  if (!wholeFiles()) return null;
  limitFiles(house.player, 0);
  const names = wholeFiles();
  if (!names) limitFiles(house.player, 'unlimited');
  return names;
}, 'a moment in which nothing is written');

test('no D-Bus: one line in the log says what is missing, and the music plays', async () => {
  const lines = house.log().split('\n').filter((line) => line.includes('D-Bus'));
  assert.equal(lines.length, 1, lines.join('\n'));
  assert.match(lines[0], /WARN .*No D-Bus \(.*media keys and desktops cannot steer the player; all else works\./);
  assert.match(lines[0], /Start it in a session with a bus, or set player\.mpris = false$/);
  await assertPlaysOn();
});

test('a second player on the same state is refused, and the first goes on', async () => {
  assertRefused(await another({}), 1,
    `Another player uses the state folder ${house.stateFolder}. Stop it, or give this one a folder`);
  await assertPlaysOn();
});

test('a second player on the same port is refused, and the first goes on', async () => {
  const { port } = new URL(house.url);
  const folder = join(house.folder, 'second');
  assertRefused(await another({
    'player.state-folder': folder, 'control.port': port, 'player.mpris': 'false', 'log.file': '',
    'log.level': 'warn',
  }), 2, `Port ${port} of 127.0.0.1 cannot be used`, 'Choose another with control.port.');
  await assertPlaysOn();
});

test('a full disk is told once, the old files stay whole, and the music goes on', async () => {
  await house.until(() => state().volume === 42 && state().playMode === 4, 'the state to be kept');
  const files = await fillDisk();
  const before = tokens();
  const written = readFileSync(join(house.stateFolder, 'state.json'), 'utf8');
  for (const volume of [41, 40, 42]) await house.command('volume', { volume });
  await house.command('volume', { volume: 39 });
  await house.emu('POST', 'login/expire', {});
  await house.browse();
  const [full] = await house.until(async () => {
    const told = await messagesFrom('player');
    return told.length > 0 && told;
  }, 'the message');
  assert.equal(full.title, 'The state cannot be saved');
  assert.match(full.text, /File too large\)\. Free some space in the state folder, or make it writable; playing goes on\.$/);
  const [login] = await house.until(async () => {
    const told = await messagesFrom('login');
    return told.length > 0 && told;
  }, 'the message');
  assert.equal(login.title, 'Trouble with the login');
  assert.match(login.text, /^The login could not be saved \(.*File too large\)\. It works until the player ends; saving is tried again\.$/);
  await house.command('volume', { volume: 42 });
  await assertPlaysOn();
  assert.equal((await messagesFrom('player')).length, 1);
  assert.equal((await messagesFrom('login')).length, 1);
  assert.equal(readFileSync(join(house.stateFolder, 'state.json'), 'utf8'), written);
  assert.equal(tokens(), before);
  assert.deepEqual(await house.until(wholeFiles, 'a moment in which nothing is written'), files);

  limitFiles(house.player, 'unlimited');
  await house.command('volume', { volume: 43 });
  await house.until(() => state().volume === 43, 'the state to be kept again');
  await house.command('volume', { volume: 42 });
  await house.until(() => state().volume === 42, 'the state to be kept again');
});

test('a state folder that has gone is told once, and kept again when it is back', async () => {
  const away = `${house.stateFolder}.away`;
  const before = (await messagesFrom('player')).length;
  await house.until(wholeFiles, 'a moment in which nothing is written');
  renameSync(house.stateFolder, away);
  await house.command('volume', { volume: 50 });
  const told = await house.until(async () => {
    const all = await messagesFrom('player');
    return all.length > before && all;
  }, 'the message');
  await house.command('volume', { volume: 51 });
  await assert.doesNotReject(house.browse());
  assert.match(told.at(-1).text, /state\.json: No such file or directory\)\. Free some space/);
  renameSync(away, house.stateFolder);
  await house.command('volume', { volume: 42 });
  await house.until(() => state().volume === 42, 'the state to be kept again');
  assert.equal((await messagesFrom('player')).length, before + 1);
  await assertPlaysOn();
});

test('a wrong output is refused where it is chosen, and the music goes on', async () => {
  const answer = await house.ask('POST', 'outputs', { id: 'kazoo' });
  assert.equal(answer.status, 404);
  assert.equal(answer.json.title, 'This output is not there.');
  await assertPlaysOn();
});

// From here on the player is started again with one thing wrong, and then as it was.

async function restart(settings) {
  await house.player.stop();
  assert.equal(house.player.findings, '');
  await house.startPlayer(settings);
}

test('corrupt settings: nothing starts and nothing is lost', async () => {
  await house.player.stop();
  const file = join(house.folder, 'player.conf');
  const content = '[control]\nport = 0\n\0\xff';
  writeFileSync(file, content, 'latin1');
  const before = { tokens: tokens(), state: state() };
  assertRefused(await run(process.env.TAVU_PLAYER, ['--config', file]), 2,
    `${file}, line 3: this is not UTF-8 text.`, 'prints a fresh file.');
  assert.equal(readFileSync(file, 'latin1'), content);
  assert.deepEqual({ tokens: tokens(), state: state() }, before);
});

test('a plug-in that is none: nothing starts and nothing is lost', async () => {
  const plugin = join(house.folder, 'plugin.so');
  writeFileSync(plugin, 'no library');
  const before = { tokens: tokens(), state: state() };
  assertRefused(await another({ 'player.plugin': plugin, 'player.mpris': 'false' }), 1,
    `${plugin} cannot be loaded`, "Set player.plugin to a plug-in of this player's version.");
  assert.deepEqual({ tokens: tokens(), state: state() }, before);
});

test('no sound device: the play command says so, and what waits is not lost', async () => {
  await house.startPlayer({ 'player.output': 'auto' });
  await house.signedIn();
  assert.equal((await house.now()).title, state().track.title);
  await house.command('resume');
  const failed = await house.until(async () => {
    const now = await house.now();
    return now.error && now;
  }, 'the failure');
  assert.notEqual(failed.state, State.playing);
  assert.deepEqual(failed.error,
    { title: 'There is no sound device. Please connect one or set another output.', detail: '' });
  const told = (await house.messages()).filter(({ title }) => title === failed.error.title);
  assert.equal(told.length, 1);
  assert.equal(await house.login(), 'loggedIn');
  assert.equal(failed.mode, 4);
  assert.equal(failed.volume, 42);
  await restart({ 'player.output': 'audioconvert ! fakesink sync=true' });
  await house.signedIn();
});

test('a wrong authority: what to change is named, and the login is kept', async () => {
  const other = new Program(process.env.TAVU_EMULATOR, ['--state', join(house.folder, 'other'),
    '--samples', process.env.TAVU_SAMPLES]);
  const line = await other.says((said) => said.split('\n').find((text) => text.startsWith('{"')));
  await other.stop();
  const right = house.service.caFile;
  const before = tokens();
  await restart({ 'service.ca-file': JSON.parse(line).caFile });
  const [told] = await house.until(async () => {
    const all = await messagesFrom('login');
    return all.length > 0 && all;
  }, 'the message');
  assert.equal(told.title, 'Trouble with the login');
  assert.match(told.text, /^The login could not be renewed \(.*certificate.*; check service\.ca-file and/);
  assert.equal(await house.login(), 'loggedIn');
  assert.equal(tokens(), before);
  const now = await house.now();
  assert.equal(now.mode, 4);
  assert.equal(now.volume, 42);

  await restart({ 'service.ca-file': right });
  await house.signedIn();
  assert.deepEqual(await messagesFrom('login'), []);
});

test('a wrong authority: a sign-in says so where it is asked for', async () => {
  const right = house.service.caFile;
  await house.told('POST', 'logout');
  await restart({ 'service.ca-file': join(house.folder, 'other', 'ca.pem') });
  await house.told('POST', 'login/start');
  const login = await house.until(async () => {
    const { login: now } = await house.state();
    return now.state === 'failed' && now;
  }, 'the failure');
  assert.match(login.message, /^The service cannot be asked for a code: .*certificate.*; check service\.ca-file and the service's addresses in the settings, and this machine's date\. Get a new code to try again\.$/);
  await restart({ 'service.ca-file': right });
  await house.signIn();
  assert.equal((await house.now()).volume, 42);
});

// The emulator's side.

async function emulatorOn(music) {
  const program = new Program(process.env.TAVU_EMULATOR,
    ['--state', mkdtempSync(join(house.folder, 'emulator-')), '--no-login', music]);
  const line = await program.says((said) => said.split('\n').find((text) => text.startsWith('{"')));
  return { program, service: JSON.parse(line) };
}

test('no music: the terminal and the page say so', async () => {
  const empty = join(house.folder, 'empty');
  mkdirSync(empty);
  const { program, service } = await emulatorOn(empty);
  await program.says((said) => said.includes(
    `There is no music in ${empty}. Put FLAC, MP3, Ogg, Opus or M4A files there, or start without a folder`));
  const page = await (await fetch(`${service.http}`)).text();
  assert.match(page, /There is no music in the folder/);
  await program.stop();
  assert.equal(program.exit.code, 0);
});

test('unreadable files are named, with the reason, and the rest is served', async () => {
  const music = join(house.folder, 'music');
  mkdirSync(music);
  const sample = readdirSync(process.env.TAVU_SAMPLES, { recursive: true, withFileTypes: true })
    .find((entry) => entry.isFile() && entry.name.endsWith('.flac'));
  copyFileSync(join(sample.path, sample.name), join(music, 'good.flac'));
  writeFileSync(join(music, 'broken.mp3'), 'this is no music');
  writeFileSync(join(music, 'empty.flac'), '');
  const { program, service } = await emulatorOn(music);
  await program.says((said) => /Left out: broken\.mp3: .+\n/.test(said) && /Left out: empty\.flac: .+\n/.test(said));
  await program.says((said) => said.includes('Serving 1 tracks on 1 albums'));
  const status = await (await fetch(`${service.control}status`)).json();
  assert.equal(status.problems.length, 2);
  await program.stop();
});

test('a full disk costs the emulator its logins at the next start, and it says so', async () => {
  limitFiles(house.emulator, 0);
  await house.told('POST', 'logout');
  await house.signIn();
  await house.emulator.says((said) => /^Logins cannot be kept: .*free some space there\.$/m.test(said));
  limitFiles(house.emulator, 'unlimited');
  await house.signedIn();
});

test('nothing was found amiss in either program', async () => {
  await house.player.stop();
  assert.equal(house.player.findings, '');
  assert.equal(house.emulator.findings, '');
  assert.notEqual(wholeFiles(), null, 'nothing half written is left');
  rmSync(house.stateFolder, { recursive: true });
});
