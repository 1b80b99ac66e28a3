// Staying signed in, and being signed out.
import assert from 'node:assert/strict';
import { readFileSync, chmodSync, statSync } from 'node:fs';
import { join } from 'node:path';
import { State } from '../support/house.mjs';
import { cannotBrowse, noStragglers, trials, words } from './support/trial.mjs';

const entry = trials();
const login = async (house) => (await house.state()).login;
const tokenFile = (house) => join(house.stateFolder, 'tokens.json');
const kept = (house) => JSON.stringify(JSON.parse(readFileSync(tokenFile(house), 'utf8')));

/** Has the next request renew the token. */
async function refuseToken(house) {
  await noStragglers(house);
  await house.emu('POST', 'login/expire', {});
}

/** Who browses meanwhile asks for a new code by that; the login screen says why all the same. */
async function signedOutByService(house) {
  await house.until(async () => await house.login() !== 'loggedIn', 'the end of the login');
  const { json } = await house.browse('');
  assert.match(JSON.stringify(json), /Sign in again/);
}

entry('O10 O12 a renewed login is on the disk, after one request', async (house) => {
  const before = kept(house);
  await refuseToken(house);
  const since = await house.mark();
  const two = await Promise.all([house.browse(house.albums), house.browse('')]);
  for (const { status } of two) assert.equal(status, 200);
  assert.equal((await house.ledger('token', since)).length, 1);
  assert.notEqual(kept(house), before);
  const uses = (await house.ledger('browse', since)).filter(({ status }) => status !== 401);
  const written = statSync(tokenFile(house)).mtimeMs;
  for (const { at } of uses) assert.ok(written <= Date.parse(at) + 1, `${written}, ${at}`);
});

entry('O11 the login is taken back: signed out once, and stopped once', async (house) => {
  await house.command('resume');
  await house.waitForState(State.playing);
  await noStragglers(house);
  await house.emu('POST', 'login/revoke', {});
  const since = await house.mark();
  const waiting = await Promise.all([1, 2, 3].map(() => house.browse(house.albums)));
  // Who waits for the renewal is told so; who is refused after it sees the refusal itself, and who
  // comes later the login screen.
  assert.ok(waiting.some((answer) => words(answer).includes('Please log in again.')), waiting.map(words).join('\n'));
  for (const answer of waiting) {
    const told = ['Please log in again.', cannotBrowse].some((text) => words(answer).includes(text));
    assert.ok(told || answer.status === 200, words(answer));
  }
  await signedOutByService(house);
  await house.waitForState(State.idle);
  const renewals = (await house.ledger('token', since)).filter(({ grantType }) => grantType === 'refresh_token');
  assert.equal(renewals.length, 1, 'no loop');
}, { login: 'any', plays: true });

entry('O13 the answer to a renewal is lost before the service acts: made up for', async (house) => {
  await refuseToken(house);
  await house.fault({ kind: 'token', effect: 'close', times: 1 });
  const since = await house.mark();
  assert.equal((await house.browse(house.albums)).status, 200);
  assert.equal((await house.ledger('token', since)).length, 2);
});

entry('O13 it is lost after the service has acted: the token before it is tried once more', async (house) => {
  await refuseToken(house);
  await house.fault({ kind: 'token', effect: 'cut', after: 10, times: 1 });
  const since = await house.mark();
  assert.equal((await house.browse(house.albums)).status, 200);
  assert.equal((await house.ledger('token', since)).length, 2);
});

/** The emulator again, on its state, with other options. */
async function restartEmulator(house, ...options) {
  await house.emulator.stop();
  await house.startEmulator(options);
}

entry('O13 it is lost, and the token before it is worth nothing: the login screen, and no loop', async (house) => {
  await restartEmulator(house, '--strict-refresh');
  await refuseToken(house);
  await house.fault({ kind: 'token', effect: 'cut', after: 10, times: 1 });
  const since = await house.mark();
  assert.notEqual((await house.browse(house.albums)).status, 200);
  await house.until(async () => (await login(house)).state === 'loggedOut', 'the end of the login');
  assert.match((await login(house)).message, /Sign in again/);
  assert.equal((await house.ledger('token', since)).length, 2);
  await restartEmulator(house);
}, { login: 'any', plays: true });

entry('O18 killed at any moment of a renewal: the old login or the new one', async (house) => {
  // It renews at each start; the kill comes so long after the service has heard of it.
  const rounds = 60;
  const latestMs = 12;
  for (let round = 0; round < rounds; ++round) {
    await house.player.kill();
    const since = await house.mark();
    await house.startPlayer();
    await house.until(async () => (await house.ledger('token', since)).length > 0, 'the renewal');
    const end = performance.now() + (round / rounds) * latestMs;
    while (performance.now() < end) await new Promise((done) => { setImmediate(done); });
  }
  await house.player.kill();
  await house.startPlayer();
  await house.signedIn();
  assert.ok(!house.log().includes('set aside'), 'no file was torn');
}, { process: 'new', plays: true });

entry('O20 a token file that others can read is mended, and that is said', async (house) => {
  await house.player.kill();
  chmodSync(tokenFile(house), 0o644);
  const start = house.log().length;
  await house.startPlayer();
  await house.signedIn();
  assert.equal(statSync(tokenFile(house)).mode & 0o777, 0o600);
  assert.match(house.log().slice(start), /its mode is now 0600/);
}, { process: 'new', plays: true });
