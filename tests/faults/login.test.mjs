// Signing in, and what keeps one from it.
import assert from 'node:assert/strict';
import { existsSync } from 'node:fs';
import { join } from 'node:path';
import { trials } from './support/trial.mjs';

// Clocks go ten times as fast here. A poll is recorded when it comes, the next one is timed from
// its answer: the time between two is never less than the interval, but for rounding.
const entry = trials({ speed: 10, emulator: ['--poll-interval', '5'] });
const roundingMs = 100;
const login = async (house) => (await house.state()).login;

async function signOut(house) {
  await house.told('POST', 'logout');
  await house.until(async () => (await login(house)).state === 'loggedOut', 'the end of the login');
}

/** Signed out before the body, and in again after it. */
const signingIn = (title, body) => entry(title, async (house) => {
  await signOut(house);
  await body(house);
}, { login: 'any', plays: true });

async function failsWith(house, text) {
  const failed = await house.until(async () => {
    const now = await login(house);
    return now.state === 'failed' && now;
  }, 'the failure');
  assert.ok(failed.message.includes(text), failed.message);
  return failed;
}

/** Asks for a code that is refused at once, or at the first poll. */
async function startFails(house, text, ...rules) {
  await house.fault(...rules);
  const since = await house.mark();
  await house.told('POST', 'login/start');
  await failsWith(house, text);
  return since;
}

/** The milliseconds between the polls since then. */
async function gaps(house, since) {
  const times = (await house.ledger('token', since)).map(({ at }) => Date.parse(at));
  return times.slice(1).map((time, index) => time - times[index]);
}

const polls = (house, since, count) => house.until(
  async () => (await house.ledger('token', since)).length >= count, `${count} polls`, 120000);

async function approve(house, userCode) {
  await house.emu('POST', 'login/approve', { user_code: userCode });
  await house.signedIn();
}

/** What the service says to an approval that may come too late. */
const approval = (house, userCode) => fetch(`${house.service.control}login/approve`, {
  method: 'POST', headers: { 'content-type': 'application/json' },
  body: JSON.stringify({ user_code: userCode }),
});

signingIn('O01 pending 100 times: one poll in an interval, never more', async (house) => {
  await house.fault({ kind: 'login', effect: 'edit', set: { '/interval': 1 } });
  const pending = 100;
  await house.fault({ kind: 'token', effect: 'oauth-error', error: 'authorization_pending', times: pending });
  const since = await house.mark();
  const { userCode } = await house.askForCode();
  await polls(house, since, pending);
  assert.equal((await login(house)).userCode, userCode);
  await approve(house, userCode);
  const waits = await gaps(house, since);
  assert.ok(waits.length >= pending, `${waits.length}`);
  assert.ok(Math.min(...waits) >= 1000 - roundingMs, `${Math.min(...waits)} ms`);
});

signingIn('O02 slow down, three times: five seconds more each time, and kept', async (house) => {
  await house.fault({ kind: 'token', effect: 'oauth-error', error: 'slow_down', times: 3 },
    { kind: 'token', effect: 'oauth-error', error: 'authorization_pending', times: 1 });
  const since = await house.mark();
  const { userCode } = await house.askForCode();
  await polls(house, since, 3);
  await approve(house, userCode);
  const waits = await gaps(house, since);
  assert.ok(waits.length >= 4, `${waits}`);
  [10000, 15000, 20000, 20000].forEach((least, index) => {
    assert.ok(waits[index] >= least - roundingMs, `${waits}`);
  });
});

signingIn('O03 no interval is five seconds', async (house) => {
  await house.fault({ kind: 'login', effect: 'edit', remove: ['interval'] },
    { kind: 'token', effect: 'oauth-error', error: 'authorization_pending', times: 2 });
  const since = await house.mark();
  const { userCode } = await house.askForCode();
  await approve(house, userCode);
  const [code, first] = (await house.ledger('login,token', since)).map(({ at }) => Date.parse(at));
  for (const wait of [first - code, ...await gaps(house, since)])
    assert.ok(wait >= 5000 - roundingMs, `${wait} ms`);
});

const troubles = {
  'answers 500': { effect: 'status', status: 500, times: 3 },
  'hangs up': { effect: 'close', times: 3 },
};
for (const [title, trouble] of Object.entries(troubles)) {
  signingIn(`O04 an authority that ${title}: asked half as often each time, and the code stays`, async (house) => {
    await house.fault({ kind: 'login', effect: 'edit', set: { '/interval': 1 } }, { kind: 'token', ...trouble });
    const since = await house.mark();
    const { userCode } = await house.askForCode();
    await polls(house, since, 3);
    const now = await login(house);
    assert.equal(now.state, 'waiting');
    assert.equal(now.userCode, userCode);
    await approve(house, userCode);
    const waits = await gaps(house, since);
    assert.ok(waits.length >= 3, `${waits}`);
    [2000, 4000, 8000].forEach((least, index) => {
      assert.ok(waits[index] >= least - roundingMs, `${waits}`);
    });
  });
}

const ends = {
  'O05 the code has run out': ['expired_token', 'The code has expired. Get a new code.'],
  'O06 the user says no': ['access_denied', 'The sign-in was declined. Get a new code to try again.'],
  'O08 an unknown client': ['invalid_client', 'Check the client id and the client secret in the settings.'],
  'O08 a grant that is not offered': ['unsupported_grant_type', 'The service does not offer sign-in by code'],
};
for (const [title, [error, text]] of Object.entries(ends)) {
  signingIn(title, async (house) => {
    const since = await startFails(house, text, { kind: 'token', effect: 'oauth-error', error });
    const later = performance.now() + 1500; // three intervals on the house's clocks
    await house.until(() => performance.now() > later, 'a while');
    assert.equal((await house.ledger('token', since)).length, 1, 'nobody is asked again');
    assert.equal((await house.ledger('login', since)).length, 1, 'no new code unless the user asks');
  });
}

signingIn('O08 an authority that knows the grant by its other name alone', async (house) => {
  await house.emulator.stop();
  await house.startEmulator(['--poll-interval', '5', '--device-grant', 'urn']);
  const since = await house.mark();
  await house.askForCode();
  await failsWith(house, 'The service does not offer sign-in by code (unsupported_grant_type).');
  const [asked, ...more] = await house.ledger('token', since);
  assert.equal(asked.grantType, 'device_code', 'the name that the plug-in has registered');
  assert.deepEqual(more, []);
  await house.emulator.stop();
  await house.startEmulator(['--poll-interval', '5']);
});

signingIn('O07 a verifier that is not believed: it starts over once, with another', async (house) => {
  await house.fault({ kind: 'token', effect: 'oauth-error', error: 'invalid_grant', times: 1 });
  const first = await house.askForCode();
  const second = await house.until(async () => {
    const now = await login(house);
    return now.state === 'waiting' && now.userCode !== first.userCode && now;
  }, 'another code');
  await house.emu('POST', 'login/approve', { user_code: second.userCode });
  await house.signedIn();
});

const answers = {
  'no device code': { remove: ['device_code'] },
  'no user code': { remove: ['user_code'] },
  'no address': { remove: ['verification_uri'] },
  'a script for an address': { set: { '/verification_uri': 'javascript:alert(1)' } },
  'a code of 10 kB': { set: { '/user_code': 'X'.repeat(10000) } },
  'a code that turns its text round': { set: { '/user_code': 'AB\u202eCD' } },
};
for (const [title, change] of Object.entries(answers)) {
  signingIn(`O09 ${title}`, async (house) => {
    await startFails(house, 'Get a new code to try again.', { kind: 'login', effect: 'edit', ...change });
  });
}

/** What is answered after the user signed out changes nothing, in the player and on its disk. */
async function comesTooLate(house, since) {
  await house.until(async () => (await house.ledger('token', since)).every(({ status }) => status === 200), 'the answer');
  const later = performance.now() + 500;
  await house.until(() => performance.now() > later, 'a while');
  assert.equal((await login(house)).state, 'loggedOut');
  assert.ok(!existsSync(join(house.stateFolder, 'tokens.json')), 'nothing is saved');
}

signingIn('O17 signed out while it waits: the approval comes too late', async (house) => {
  const { userCode } = await house.askForCode();
  await house.fault({ kind: 'token', delay: 15000 });
  await house.emu('POST', 'login/approve', { user_code: userCode });
  const since = await house.mark();
  await polls(house, since, 1);
  await signOut(house);
  await comesTooLate(house, since);
});

/** Signs out while the token is renewed for a page. Tells since when, and the page's answer. */
async function signOutDuringRenewal(house) {
  const most = 10;
  for (let round = 0; round < most; ++round) {
    await house.lift();
    await house.signIn();
    const calm = performance.now() + 500; // five seconds on the house's clocks
    await house.until(() => performance.now() > calm, 'a moment without renewals');
    await house.fault({ kind: 'token', delay: 15000 });
    const since = await house.mark();
    await house.emu('POST', 'login/expire', {});
    const asked = house.browse(house.albums);
    await polls(house, since, 1);
    await signOut(house);
    const [{ status }] = await house.ledger('token', since);
    if (status !== 200) return { since, asked };
  }
  return assert.fail('signed out before the answer');
}

signingIn('O17 signed out while the login is renewed: the new token comes too late', async (house) => {
  const { since, asked } = await signOutDuringRenewal(house);
  await comesTooLate(house, since);
  assert.notEqual((await asked).status, 200);
});

signingIn('O19 approved in the last second of the code', async (house) => {
  await house.emulator.stop();
  await house.startEmulator(['--poll-interval', '1', '--code-lifetime', '40']);
  const { userCode } = await house.askForCode();
  const asked = performance.now();
  await house.until(() => performance.now() - asked > 3900, 'its last second');
  // In time or too late: the one or the other, and it is told.
  const approved = (await approval(house, userCode)).status === 200;
  const now = await house.until(async () => {
    const state = await login(house);
    return state.state !== 'waiting' && state;
  }, 'the end');
  if (!approved) assert.equal(now.state, 'failed');
  if (now.state === 'failed') assert.equal(now.message, 'The code has expired. Get a new code.');
  else await house.signedIn();
  await house.emulator.stop();
  await house.startEmulator(['--poll-interval', '5']);
});

signingIn('O19 approved after the user signed out', async (house) => {
  const { userCode } = await house.askForCode();
  await signOut(house);
  const since = await house.mark();
  await house.emu('POST', 'login/approve', { user_code: userCode });
  const later = performance.now() + 2000;
  await house.until(() => performance.now() > later, 'a while');
  assert.deepEqual(await house.ledger('token', since), [], 'nobody asks any more');
  assert.equal((await login(house)).state, 'loggedOut');
});

signingIn('O19 approved twice', async (house) => {
  const { userCode } = await house.askForCode();
  await house.emu('POST', 'login/approve', { user_code: userCode });
  assert.equal((await approval(house, userCode)).status, 404);
  await house.signedIn();
});

const poisoned = { 'a line break': 'a\r\nx-b: c', '64 KiB': 'a'.repeat(65536), 'no ASCII': 'tök' };
for (const [title, token] of Object.entries(poisoned)) {
  signingIn(`O15 a token with ${title}`, async (house) => {
    await house.fault({ kind: 'token', effect: 'edit', set: { '/access_token': token } });
    const { userCode } = await house.askForCode();
    await house.emu('POST', 'login/approve', { user_code: userCode });
    await failsWith(house, "The service's answer cannot be used");
  });
}
