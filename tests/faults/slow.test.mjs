// Answers that are late or never end. The requests wait side by side, since each waits for as long
// as the player lets it.
import assert from 'node:assert/strict';
import { after, before, test } from 'node:test';
import { House, State } from '../support/house.mjs';
import { assertWithin, cannotBrowse, limit, words } from './support/trial.mjs';

const requestLimitMs = 30000;

let house;
let tokenless;
before(async () => { [house, tokenless] = await Promise.all([House.open(), House.open()]); });
after(() => Promise.all([house?.close(), tokenless?.close()]));

/** The button of a message that stands in place of the row's page. */
async function buttonOf(row, rule) {
  await house.fault(rule);
  const { json } = await house.browse(row.path);
  await house.lift();
  return json.rows.find(({ title }) => title === 'Go');
}

const endless = {
  'S02 no answer': { effect: 'hang' },
  'S03 a byte a second': { effect: 'trickle', bytesPerSecond: 1 },
  'S04 a stall in the body': { effect: 'stall', after: 100 },
};

test('S01 to S04: what is late comes, what never ends is given up after 30 seconds in all', async (t) => {
  const root = (await house.rows('')).filter(({ type, path }) => type === 1 && path);
  const [late, refusing, ...others] = root;
  const pattern = ({ path }) => `*${new URL(decodeURIComponent(path.split('url=')[1])).pathname}*`;
  const cases = Object.entries(endless).map(([title, effect], index) => ({ title, effect, row: others[index] }));
  const button = await buttonOf(refusing, {
    path: pattern(refusing), effect: 'conflict', label: 'Go', action: 'post', uri: '/selections/go',
  });
  await house.fault({ kind: 'selection', effect: 'hang' }, { path: pattern(late), kind: 'browse', delay: 5000 },
    ...cases.map(({ effect, row }) => ({ path: pattern(row), kind: 'browse', ...effect })));
  const before = house.player.figures();

  const slow = house.browse(late.path);
  const ends = cases.map(({ row }) => house.browse(row.path));
  const pressed = house.ask('POST', 'activate', { ref: button.ref });
  await tokenless.fault({ kind: 'token', effect: 'hang' });
  await tokenless.emu('POST', 'login/expire', {});
  const refused = Promise.all([1, 2, 3].map(() => tokenless.browse('')));
  // Who is served meanwhile does not wait.
  await house.fault({ kind: 'chunk', effect: 'none' });
  assert.equal((await house.now()).state, State.idle);

  await t.test('S01 the first byte after five seconds', async () => {
    const answer = await slow;
    assert.equal(answer.status, 200);
    assert.ok(answer.ms >= 4900, `${answer.ms}`);
    assertWithin(answer.ms, 6000);
  });
  for (const [index, { title }] of cases.entries()) {
    await t.test(title, async () => {
      const answer = await ends[index];
      assert.ok(words(answer).includes(cannotBrowse), words(answer));
      assert.ok(answer.ms >= requestLimitMs - 500 && answer.ms <= requestLimitMs + limit(2000), `${answer.ms}`);
    });
  }
  await t.test('S37 a token that never comes', async () => {
    for (const answer of await refused) {
      assert.ok(words(answer).includes('Please log in again.'), words(answer));
      assert.ok(answer.ms <= requestLimitMs + limit(6000), `${answer.ms}`);
    }
    await tokenless.lift();
    assert.equal(tokenless.player.findings, '');
  });
  await t.test('S49 a button whose action is never answered', async () => {
    const answer = await pressed;
    assert.ok(answer.ms <= requestLimitMs + limit(6000), `${answer.ms}`);
    assert.equal(house.player.ended, false);
  });
  await t.test('all works, and nothing is left', async () => {
    await house.lift();
    for (const { row } of cases) assert.equal((await house.browse(row.path)).status, 200);
    const left = house.player.figures();
    assert.ok(left.threads <= before.threads + 2);
    assert.ok(left.sockets <= before.sockets + 10);
    assert.equal(await house.login(), 'loggedIn');
    assert.equal(house.player.findings, '');
    assert.equal(house.emulator.findings, '');
  });
});
