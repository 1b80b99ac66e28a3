// Troubles that last, in a house whose clocks go thirty times as fast.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { join } from 'node:path';
import { trials } from './support/trial.mjs';

const entry = trials({ speed: 30 });
const login = async (house) => (await house.state()).login;
const kept = (house) => readFileSync(join(house.stateFolder, 'tokens.json'), 'utf8');

entry('O14 the authority is down for ten minutes: asked every 30 seconds, and the login stays', async (house) => {
  const tries = 20;
  await house.fault({ kind: 'token', effect: 'status', status: 500 });
  const before = kept(house);
  const since = await house.mark();
  await house.emu('POST', 'login/expire', {});
  const asked = house.browse(house.albums);
  await house.until(async () => (await house.ledger('token', since)).length >= tries, 'ten minutes', 120000);
  assert.notEqual((await asked).status, 200);
  const { state, message } = await login(house);
  assert.equal(state, 'loggedIn');
  assert.match(message, /tried again every 30 seconds/);
  assert.equal(kept(house), before);
  const times = (await house.ledger('token', since)).map(({ at }) => Date.parse(at));
  const roundingMs = 300;
  times.slice(1).forEach((time, index) => {
    assert.ok(time - times[index] >= 30000 - roundingMs, `${time - times[index]} ms`);
  });
  await house.lift();
  await house.until(async () => (await house.browse(house.albums)).status === 200, 'the next try');
  assert.notEqual(kept(house), before);
});
