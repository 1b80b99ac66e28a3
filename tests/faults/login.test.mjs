// Signing in, and what keeps one from it.
import assert from 'node:assert/strict';
import { trials } from './support/trial.mjs';

const entry = trials();
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

signingIn('O01 O02 it asks once in an interval, slower when told, and goes on', async (house) => {
  await house.fault({ kind: 'token', effect: 'oauth-error', error: 'slow_down', times: 1 });
  const { userCode } = await house.askForCode();
  const since = await house.mark();
  await house.until(async () => (await house.ledger('token', since)).length >= 1, 'a poll');
  await house.emu('POST', 'login/approve', { user_code: userCode });
  await house.signedIn();
  const times = (await house.ledger('token', since)).map(({ at }) => Date.parse(at));
  assert.equal(times.length, 2);
  // One second, and five more; the clocks of the two need not agree to the last tenth.
  assert.ok(times[1] - times[0] >= 5500, `${times[1] - times[0]} ms`);
});

signingIn('O03 no interval is five seconds', async (house) => {
  await house.fault({ kind: 'login', effect: 'edit', remove: ['interval'] });
  const since = await house.mark();
  const { userCode } = await house.askForCode();
  await house.emu('POST', 'login/approve', { user_code: userCode });
  await house.signedIn();
  const [code, poll] = (await house.ledger('login,token', since)).map(({ at }) => Date.parse(at));
  assert.ok(poll - code >= 4500, `${poll - code} ms`);
});

signingIn('O04 an authority in trouble is asked more rarely, and the code stays', async (house) => {
  await house.fault({ kind: 'token', effect: 'status', status: 500, times: 2 });
  const { userCode } = await house.askForCode();
  const since = await house.mark();
  await house.until(async () => (await house.ledger('token', since)).length >= 2, 'the polls');
  assert.equal((await login(house)).userCode, userCode);
  await house.emu('POST', 'login/approve', { user_code: userCode });
  await house.signedIn();
  const times = (await house.ledger('token', since)).map(({ at }) => Date.parse(at));
  assert.ok(times[1] - times[0] >= 1700, `${times[1] - times[0]} ms`);
  assert.ok(times[2] - times[1] >= 3700, `${times[2] - times[1]} ms`);
});

const ends = {
  'O05 the code has run out': ['expired_token', 'The code has expired. Get a new code.'],
  'O06 the user says no': ['access_denied', 'The sign-in was declined. Get a new code to try again.'],
  'O08 an unknown client': ['invalid_client', 'Check the client id and the client secret in the settings.'],
  'O08 a grant that is not offered': ['unsupported_grant_type', 'The service does not offer sign-in by code'],
};
for (const [title, [error, text]] of Object.entries(ends)) {
  signingIn(title, async (house) => {
    const since = await startFails(house, text, { kind: 'token', effect: 'oauth-error', error });
    assert.equal((await house.ledger('token', since)).length, 1, 'nobody is asked again');
  });
}

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

signingIn('O17 signed out while it waits: the approval comes too late', async (house) => {
  const { userCode } = await house.askForCode();
  await house.fault({ kind: 'token', delay: 1500 });
  await house.emu('POST', 'login/approve', { user_code: userCode });
  const since = await house.mark();
  await house.until(async () => (await house.ledger('token', since)).length === 1, 'the poll');
  await signOut(house);
  await house.until(async () => (await house.ledger('token', since))[0].status === 200, 'the answer');
  assert.equal((await login(house)).state, 'loggedOut');
});

signingIn('O19 approved twice', async (house) => {
  const { userCode } = await house.askForCode();
  await house.emu('POST', 'login/approve', { user_code: userCode });
  const again = await fetch(`${house.service.control}login/approve`, {
    method: 'POST', headers: { 'content-type': 'application/json' },
    body: JSON.stringify({ user_code: userCode }),
  });
  assert.equal(again.status, 404);
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
