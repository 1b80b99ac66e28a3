// The wall clock jumps, by hours and by years: what is timed goes on, what can expire is judged anew.
import assert from 'node:assert/strict';
import { writeFileSync, mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after } from 'node:test';
import { State } from '../support/house.mjs';
import { limit, trials } from './support/trial.mjs';

const folder = mkdtempSync(join(tmpdir(), 'tavu-clock-'));
const clock = join(folder, 'clock');
const setClock = (offset) => writeFileSync(clock, `${offset}\n`);
setClock('+0');
after(() => rmSync(folder, { recursive: true, force: true }));

const entry = trials({
  playerTime: { FAKETIME_TIMESTAMP_FILE: clock, FAKETIME_NO_CACHE: '1', FAKETIME_DONT_FAKE_MONOTONIC: '1' },
});

/** The body, and the clock right again after it. */
const jumping = (title, body, how) => entry(title, async (house) => {
  try {
    await body(house);
  } finally {
    setClock('+0');
  }
}, how);

const wallOf = async (house) => (await house.now()).at;

jumping('M16 an hour\'s pause outlasts the address: the sound is back at the same place', async (house) => {
  // The service's clock does not jump along.
  await house.fault({ kind: 'chunk', effect: 'expire', in: 3600000 },
    { kind: 'instance', effect: 'expire', in: 2 * 3600000 });
  const began = await house.mark();
  await house.play(house.album);
  await house.waitForState(State.playing);
  await house.until(async () => (await house.now()).position > 1000, 'some of it');
  await house.command('pause');
  const before = await house.waitForState(State.paused);
  await house.until(async () => (await house.reports(began)).includes('STOP PAUSE'), 'the report');
  setClock('+3601');
  const since = await house.mark();
  const started = performance.now();
  assert.equal((await house.command('resume')).status, 200);
  const after = await house.until(async () => {
    const now = await house.now();
    return now.state === State.playing && now.position > before.position && now;
  }, 'the sound');
  const took = performance.now() - started;
  assert.ok(took <= limit(2000));
  assert.equal(after.title, before.title);
  assert.ok(after.position - before.position < 500 + took, `${before.position} -> ${after.position}`);
  const renewals = (await house.ledger('instance', since)).filter(({ track }) => track === before.title);
  assert.equal(renewals.length, 1, 'the address is renewed');
  await house.until(async () => (await house.reports(since)).length > 0, 'the report');
  assert.deepEqual(await house.reports(since), ['START UNPAUSE']);
}, { plays: true });

for (const offset of ['+86400', '-86400']) {
  jumping(`O16 the clock is wrong by ${offset} seconds when a token is given and when it is used`, async (house) => {
    const since = await house.mark();
    setClock(offset);
    assert.equal((await house.browse(house.albums)).status, 200);
    assert.deepEqual(await house.ledger('token', since), [], 'the clock expires no token');
    await house.emu('POST', 'login/expire', {});
    const stragglersMs = 2500;
    const calm = Date.now() + stragglersMs;
    await house.until(() => Date.now() > calm, 'a moment without renewals');
    const again = await house.browse(house.albums);
    assert.equal(again.status, 200);
    setClock('+0');
    assert.equal((await house.browse(house.albums)).status, 200);
    assert.equal((await house.ledger('token', since)).length, 1, 'one renewal, for the service\'s refusal');
  });
}

for (const offset of ['+3600', '-3600', '+315360000', '-315360000']) {
  jumping(`H12 the clock jumps by ${offset} seconds while it plays`, async (house) => {
    await house.play(house.album);
    const { title, position } = await house.waitForState(State.playing);
    const before = await wallOf(house);
    setClock(offset);
    await house.until(async () => Math.abs(await wallOf(house) - before) > 3000000, 'the other time');
    await house.until(async () => (await house.now()).position > position + 1000, 'the sound to go on');
    const now = await house.now();
    assert.equal(now.title, title);
    assert.equal(now.state, State.playing);
    assert.equal(await house.login(), 'loggedIn');
    // A certificate may be judged to have expired, or not to be valid yet, and that is said.
    const answer = await house.browse(house.albums);
    if (answer.status !== 200) assert.match(house.log(), /[Cc]ertificate|TLS|SSL/);
    setClock('+0');
    assert.equal((await house.command('pause')).status, 200);
    await house.waitForState(State.paused);
  }, { plays: true });
}

jumping('H13 asleep for ten minutes while it plays: the sound goes on', async (house) => {
  const asleepMs = 1500;
  const wakesMs = 5000;
  // The address expires meanwhile, and the connection to the sound is gone when it wakes.
  const { tracks } = await house.emu('GET', 'catalogue');
  const { id } = tracks.find(({ title }) => title === 'Platform Two');
  await house.fault({ kind: 'chunk', effect: 'expire', in: 300000 },
    { kind: 'audio', path: `/audio/${id}.*`, effect: 'cut', after: 40000, bytesPerSecond: 20000, times: 1 });
  await house.play(house.album);
  const { title } = await house.waitForState(State.playing);
  assert.equal(title, 'Platform Two');
  process.kill(house.player.pid, 'SIGSTOP');
  try {
    const until = performance.now() + asleepMs;
    await house.until(() => performance.now() > until, 'the sleep');
    setClock('+600');
  } finally {
    process.kill(house.player.pid, 'SIGCONT');
  }
  const woken = performance.now();
  const { position } = await house.now();
  await house.until(async () => {
    const now = await house.now();
    return now.title === title && now.position > position + 300;
  }, 'the sound');
  assert.ok(performance.now() - woken <= limit(wakesMs));
  await house.until(async () => (await house.now()).position > 6000, 'what came after the sleep');
  assert.equal((await house.now()).title, title);
  assert.equal(await house.login(), 'loggedIn');
}, { plays: true });
