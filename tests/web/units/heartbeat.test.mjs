import assert from 'node:assert/strict';
import { test } from 'node:test';

import { patienceMs, watchForSilence } from '../../../src/player/web/js/heartbeat.js';

/** A clock that ticks by hand, and a player that answers as `reply` says. */
function setUp({ reply = async () => {}, wanted = () => true } = {}) {
  let now = 0;
  let tick;
  let everyMs;
  const events = { heardAt: 0 };
  const seen = { pings: 0, silences: [] };
  watchForSilence({
    events,
    wanted,
    ping: () => {
      seen.pings += 1;
      return reply();
    },
    onSilent: () => seen.silences.push(now),
    clock: {
      performance: { now: () => now },
      setInterval: (run, ms) => {
        tick = run;
        everyMs = ms;
      },
    },
  });
  const pass = async (ms) => {
    for (const end = now + ms; now < end; ) {
      now += everyMs;
      tick();
      await new Promise((done) => {
        setImmediate(done);
      });
    }
  };
  return { events, seen, pass };
}

test('a stream that speaks is not asked', async () => {
  const { events, seen, pass } = setUp();
  for (let i = 1; i <= 5; i += 1) {
    await pass(1000);
    events.heardAt = i * 1000;
  }
  assert.equal(seen.pings, 0);
});

test('a quiet player that answers is not lost, and asked in measure', async () => {
  const { seen, pass } = setUp();
  await pass(10000);
  assert.deepEqual(seen.silences, []);
  assert.ok(seen.pings >= 3 && seen.pings <= 6, `${seen.pings} in ten seconds`);
});

test('a player that has gone is noticed within five seconds, waiting included', async () => {
  const { seen, pass } = setUp({
    reply: async () => {
      throw new Error('no answer');
    },
  });
  await pass(2000);
  assert.ok(seen.silences[0] + patienceMs <= 5000);
});

test('nobody is asked while nobody looks', async () => {
  const { seen, pass } = setUp({ wanted: () => false });
  await pass(10000);
  assert.equal(seen.pings, 0);
});

test('one question at a time', async () => {
  const { seen, pass } = setUp({ reply: () => new Promise(() => {}) });
  await pass(10000);
  assert.equal(seen.pings, 1);
});
