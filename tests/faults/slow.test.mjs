// Answers that are late or never end, in a house whose clocks go five times as fast. Faster ones make
// of each stop of the machine one that lets the next deadline come first.
import assert from 'node:assert/strict';
import { assertWithin, browseFails, browseGives, limit, trials, words } from './support/trial.mjs';

const entry = trials({ speed: 5 });
const requestLimitMs = 30000;

const browse = (effect) => ({ kind: 'browse', ...effect });

/** Neither sooner nor by idle time; a little sooner, since timers may round. */
function assertGivenUp(ms, after) {
  assert.ok(ms >= after - 1000, `given up after ${Math.round(ms)} ms`);
  assert.ok(ms <= after + limit(2000), `given up after ${Math.round(ms)} ms`);
}

entry('S01 the first byte after five seconds', async (house) => {
  await house.fault(browse({ delay: 5000 }));
  const answer = await house.browse(house.albums);
  assert.equal(answer.json.count, 3);
  assert.ok(answer.ms >= 4500, `${answer.ms}`);
  assertWithin(answer.ms, 6000);
});

const endless = {
  'S02 no answer': { effect: 'hang' },
  'S03 a byte a second': { effect: 'trickle', bytesPerSecond: 1 },
  'S04 a stall in the body': { effect: 'stall', after: 100 },
};
for (const [title, effect] of Object.entries(endless)) {
  entry(`${title}: given up after 30 seconds in all`, async (house) => {
    await house.fault(browse(effect));
    const since = await house.mark();
    assertGivenUp((await browseFails(house, undefined, requestLimitMs)).ms, requestLimitMs);
    assert.equal((await house.ledger('browse', since)).length, 1, 'it is not asked again');
  });
}

entry('S37 a token that never comes: whoever waits is told to sign in', async (house) => {
  await house.fault({ kind: 'token', effect: 'hang' });
  await house.emu('POST', 'login/expire', {});
  const waiting = await Promise.all([1, 2, 3].map(() => house.browse(house.albums)));
  for (const answer of waiting) {
    assert.ok(words(answer).includes('Please log in again.'), words(answer));
    assertGivenUp(answer.ms, requestLimitMs);
  }
  // The renewal that hangs has its 30 seconds, too; the next one brings the session back.
  await house.lift();
  await house.until(async () => (await house.browse(house.albums)).status === 200, 'the session');
});

entry('S49 a button whose action is never answered: its screen closes all the same', async (house) => {
  await house.fault(
    browse({ effect: 'conflict', label: 'Go', action: 'post', uri: 'https://music.localhost/selections/go' }),
    { kind: 'selection', effect: 'hang' },
  );
  const { rows } = await browseGives(house);
  const since = await house.mark();
  const { ref } = rows.find(({ title }) => title === 'Go');
  const pressed = await house.ask('POST', 'rows/activate', { ref });
  assertGivenUp(pressed.ms, requestLimitMs);
  assert.deepEqual(pressed.json, { close: true });
  assert.equal((await house.ledger('selection', since)).length, 1, 'it is not sent again');
});
