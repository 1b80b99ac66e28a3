// One entry of the catalogue of faults: what every one of them must leave as it was.
//   A  the same process lives, and no sanitizer has found anything
//   B  every request was answered, inside its time (the entry's own claims)
//   C  what people read names what failed; no secret is in a message or in the log
//   D  login, play mode, volume, what plays and where: unchanged, unless the entry says otherwise
//   E  soon after the fault's end browsing and playing work
//   F  memory, files and threads are back
// Times are judged strictly with TAVU_STRICT=1, on a machine that does nothing else; otherwise they
// only tell an answer from a time-out.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { join } from 'node:path';
import { after, before, test } from 'node:test';
import { isDeepStrictEqual } from 'node:util';
import { House, State } from '../../support/house.mjs';
import { moment } from '../../support/program.mjs';

const album = ['Albums', 'Night Trains'];
const recoveryMs = 2000;
const busyMachineMs = 25000; // less than any time-out of a request
/** How fast the clocks of this file's house go. */
let speed = 1;

/** A limit of the catalogue as it counts here, on the house's clocks. */
export function limit(ms) {
  return process.env.TAVU_STRICT ? ms : Math.max(ms + 3000 * speed, busyMachineMs * speed);
}

export function assertWithin(ms, most) {
  assert.ok(ms <= limit(most), `took ${Math.round(ms)} ms, the limit is ${limit(most)}`);
}

/**
 * The entries of one file, which share a house: `entry(title, body, options)` adds one. The body is
 * given the house, where a track is paused and the dial is at rest. Options: as of House.open(); `prepare`
 * is given the house once, before the first entry.
 *   plays: true   it changes by itself what plays
 *   login         the login's state after it, where that is another; 'any' leaves it to the body
 *   warm: true    its first time fills what is kept from then on
 *   process: new  it ends the player's process, and starts it again
 */
export function trials(options = {}, prepare = () => {}) {
  let house;
  speed = options.speed ?? 1;
  before(async () => {
    house = await House.open(options);
    await settle(house);
    await recover(house);
    await prepare(house);
  });
  after(() => house?.close());
  return (title, body, how = {}) => test(title, () => trial(house, body, how));
}

/** Paused, some way into a track: what faults must not touch. */
async function settle(house) {
  await house.lift();
  if (await house.login() !== 'loggedIn') await house.signIn(); // The entry before it failed half-way.
  house.albums ??= (await house.row('Albums')).path;
  house.album = await house.row(...album); // A player that was started again knows no rows.
  await house.told('POST', 'player/mode', { mode: 4 });
  await house.told('POST', 'player/volume', { volume: 40 });
  await pauseSome(house);
}

async function pauseSome(house) {
  const { state } = await house.now();
  if (state === State.paused) return;
  if (state === State.idle) await playAlbum(house);
  await house.waitForState(State.playing);
  await house.command('pause');
  await house.waitForState(State.paused);
}

/** An answer that all is well. Where clocks go faster, a short stop of the machine ends a connection's time. */
async function well(ask) {
  let answer = await ask();
  const end = performance.now() + busyMachineMs;
  while (speed > 1 && answer.status !== 200 && performance.now() < end) answer = await ask();
  assert.equal(answer.status, 200, JSON.stringify(answer.json));
  return answer.json;
}

async function playAlbum(house) {
  await well(() => house.play(house.album));
  await house.waitForState(State.playing);
}

async function kept(house) {
  const { player, login } = await house.state();
  const { state, title, position, mode, volume, mute } = player;
  return { login: login.state, mode, volume, mute, play: { state, title, position } };
}

/** The same for a while: what was told a moment ago may still be on its way. */
async function keptSteadily(house) {
  let last;
  return house.until(async () => {
    const now = await kept(house);
    const same = isDeepStrictEqual(now, last);
    last = now;
    if (!same) await moment(150);
    return same && now;
  }, 'a state that stays');
}

/** What was kept comes back bit by bit where the player was started again. */
async function expectKept(house, expected) {
  const end = performance.now() + busyMachineMs;
  for (;;) {
    const left = await kept(house);
    for (const name of Object.keys(left)) if (!(name in expected)) delete left[name];
    if (isDeepStrictEqual(left, expected) || performance.now() > end)
      return assert.deepEqual(left, expected);
    await moment(50);
  }
}

/** Changes are written a moment after they happen; a kill before that is not what is meant. */
async function untilWritten(house, { mode, volume }) {
  await house.until(() => {
    try {
      const state = JSON.parse(readFileSync(join(house.stateFolder, 'state.json'), 'utf8'));
      return state.playMode === mode && state.volume === volume;
    } catch {
      return false; // not written yet
    }
  }, 'the state on the disk');
}

/** What the token file holds, and what the client knows. */
function secrets(house) {
  const found = ['emulator-secret'];
  try {
    const tokens = readFileSync(join(house.stateFolder, 'tokens.json'), 'utf8');
    found.push(...[...tokens.matchAll(/"refreshToken":"([^"]+)"/g)].map((match) => match[1]));
  } catch {
    // signed out
  }
  return found;
}

function expectNoSecrets(house, text) {
  for (const secret of secrets(house)) assert.ok(!text.includes(secret), 'a secret was told');
  assert.equal(/Bearer (?!\*\*\*)\S{8,}/.exec(text), null, 'a bearer was told');
}

function expectAlive(house) {
  assert.equal(house.player.ended, false, `the player has ended: ${house.player.said.slice(-2000)}`);
  assert.equal(house.player.findings, '');
  assert.equal(house.emulator.findings, '');
}

async function recover(house) {
  const started = performance.now();
  const { rows } = await well(() => house.browse(house.albums));
  assert.ok(rows.length >= 3, 'the albums are there');
  await playAlbum(house);
  assertWithin((performance.now() - started) * speed, recoveryMs * speed);
}

/** Within 2 %, and the few connections that are kept for a while. */
function grown(before, after) {
  const least = { rss: 4096, threads: 2, sockets: 10, files: 4 };
  return Object.keys(before)
    .filter((name) => after[name] > before[name] + Math.max(before[name] * 0.02, least[name]))
    .map((name) => `${name}: ${before[name]} -> ${after[name]}`).join(', ');
}

/** Caches fill and pools grow at first; what grows with each round is lost. */
async function expectGivenBack(house, before, again) {
  let last = before;
  let growth = '';
  for (let round = 0; round < 5; ++round) {
    const end = performance.now() + 2000;
    let figures;
    do {
      figures = house.player.figures();
      growth = grown(last, figures);
      if (!growth) return;
      await moment(50);
    } while (performance.now() < end);
    last = figures;
    await again();
  }
  assert.fail(`not given back: ${growth}`);
}

async function trial(house, body, { plays = false, login = 'loggedIn', process = 'same', warm = false }) {
  await settle(house);
  if (warm) {
    await body(house);
    await settle(house);
  }
  const before = await keptSteadily(house);
  if (process === 'new') await untilWritten(house, before);
  const figures = house.player.figures();
  const { player } = house;
  const logStart = house.log().length;

  const afterwards = async () => {
    await house.lift();
    if (await house.login() !== 'loggedIn') await house.signIn();
    await recover(house);
    await pauseSome(house);
  };
  await body(house);
  await house.lift();

  if (process === 'same') assert.equal(house.player, player, 'the same process');
  expectAlive(house);
  const expected = { ...before, login };
  if (login === 'any') delete expected.login;
  if (plays) delete expected.play;
  await expectKept(house, expected);
  expectNoSecrets(house, house.log().slice(logStart));
  expectNoSecrets(house, JSON.stringify(await house.messages()));
  await afterwards();
  if (process === 'same') await expectGivenBack(house, figures, async () => {
    await settle(house);
    await body(house);
    await afterwards();
  });
  expectAlive(house);
}

// What entries claim.

export const cannotBrowse = 'Unable to browse in to the folder.';

/** What people are told, in one text. */
export const words = ({ json }) => `${json.title ?? ''} ${json.detail ?? ''}`;

/** A browse that fails with the text, in time. */
export async function browseFails(house, text = cannotBrowse, ms = 1000) {
  const answer = await house.browse(house.albums);
  assert.notEqual(answer.status, 200, JSON.stringify(answer.json).slice(0, 500));
  assert.ok(words(answer).includes(text), JSON.stringify(answer.json));
  assertWithin(answer.ms, ms);
  return answer;
}

/** A page that comes, with so many rows. */
export async function browseGives(house, count, ms = 1000) {
  const answer = await house.browse(house.albums);
  assert.equal(answer.status, 200, JSON.stringify(answer.json).slice(0, 500));
  if (count !== undefined) assert.equal(answer.json.count, count);
  assertWithin(answer.ms, ms);
  return answer.json;
}

/** A play that fails with the text, and a message that says so. */
export async function playFails(house, text, ms = 1000) {
  const answer = await house.play(house.album);
  assert.notEqual(answer.status, 200, JSON.stringify(answer.json));
  assert.ok(words(answer).includes(text), JSON.stringify(answer.json));
  assertWithin(answer.ms, ms);
  return answer;
}

/**
 * So soon after the player has got a new token it takes a refusal for one of the token before it. It
 * has got it by its first use at the latest, however long the answer took.
 */
export async function noStragglers(house) {
  const stragglersMs = 2000;
  const [last] = (await house.ledger('token')).slice(-1);
  await house.browse(house.albums);
  const later = (await house.emu('GET', `ledger?since=${last?.serial ?? 0}`)).entries;
  const used = later.find(({ token }) => token === 'good');
  const renewed = used ? Date.parse(used.at) : Date.now();
  await house.until(() => Date.now() > renewed + stragglersMs + 200, 'a moment without renewals');
}
