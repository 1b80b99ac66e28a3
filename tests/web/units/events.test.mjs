import assert from 'node:assert/strict';
import { test } from 'node:test';

import { connectEvents } from '../../../src/player/web/js/events.js';

class FakeSource extends EventTarget {
  closed = false;

  close() {
    this.closed = true;
  }

  say(name, data) {
    const event = new Event(name);
    event.data = typeof data === 'string' ? data : JSON.stringify(data);
    this.dispatchEvent(event);
  }

  fail() {
    this.dispatchEvent(new Event('error'));
  }
}

function setUp() {
  const sources = [];
  const heard = [];
  const timers = [];
  let lost = 0;
  let now = 0;
  const clock = {
    performance: { now: () => now },
    setTimeout: (run, ms) => timers.push({ run, ms }) - 1,
    clearTimeout: (id) => {
      timers[id].run = () => {};
    },
  };
  const events = connectEvents({
    clock,
    open: () => {
      sources.push(new FakeSource());
      return sources.at(-1);
    },
    onEvent: (name, data) => heard.push([name, data]),
    onLost: () => {
      lost += 1;
    },
  });
  return {
    events,
    sources,
    heard,
    timers,
    lost: () => lost,
    pass: (ms) => {
      now += ms;
    },
  };
}

test('events arrive with their names and data', () => {
  const { sources, heard } = setUp();
  sources[0].say('snapshot', { serial: 1 });
  sources[0].say('position', { position: 5 });
  assert.deepEqual(heard, [
    ['snapshot', { serial: 1 }],
    ['position', { position: 5 }],
  ]);
});

test('an unreadable event is passed over', () => {
  const { sources, heard } = setUp();
  sources[0].say('player', '{"half":');
  sources[0].say('player', { state: 2 });
  assert.deepEqual(heard, [['player', { state: 2 }]]);
});

test('a lost stream is told once and opened anew, with growing pauses', () => {
  const { sources, timers, lost } = setUp();
  const pauses = [];
  for (let i = 0; i < 5; i += 1) {
    sources.at(-1).fail();
    sources.at(-1).fail();
    pauses.push(timers.at(-1).ms);
    timers.at(-1).run();
  }
  assert.equal(lost(), 5);
  assert.equal(sources.length, 6);
  assert.deepEqual(pauses, [500, 1000, 2000, 4000, 4000]);
});

test('a snapshot ends the growing of the pauses', () => {
  const { sources, timers } = setUp();
  sources[0].fail();
  timers.at(-1).run();
  sources[1].fail();
  timers.at(-1).run();
  sources[2].say('snapshot', {});
  sources[2].fail();
  assert.equal(timers.at(-1).ms, 500);
});

test('a stream that was replaced is closed and no longer heard of', () => {
  const { events, sources, lost } = setUp();
  events.renew();
  assert.equal(sources[0].closed, true);
  sources[0].fail();
  assert.equal(lost(), 0);
});

test('a renewal while waiting takes the place of the planned one', () => {
  const { events, sources, timers } = setUp();
  sources[0].fail();
  events.renew();
  timers[1].run();
  assert.equal(sources.length, 2);
});

test('only a stream that has been quiet for long is renewed on return', () => {
  const { events, sources, pass } = setUp();
  sources[0].say('snapshot', {});
  pass(5000);
  events.renewIfOld();
  assert.equal(sources.length, 1);
  pass(6000);
  events.renewIfOld();
  assert.equal(sources.length, 2);
});

test('a closed stream stays closed until it is renewed', () => {
  const { events, sources, timers, lost } = setUp();
  sources[0].fail();
  events.close();
  timers[1].run();
  events.doubt();
  assert.equal(sources.length, 1);
  assert.equal(lost(), 1);
  events.renew();
  assert.equal(sources.length, 2);
});

test('a doubt about the connection counts as its loss', () => {
  const { events, sources, lost } = setUp();
  events.doubt();
  events.doubt();
  assert.equal(lost(), 1);
  assert.equal(sources[0].closed, true);
});

test('a stream that never begins is given up, one that has begun is not', () => {
  const { sources, timers, lost } = setUp();
  timers[0].run();
  assert.equal(lost(), 1);
  assert.equal(sources[0].closed, true);
  timers.at(-1).run();
  assert.equal(sources.length, 2);
  const opening = timers.at(-1);
  sources[1].say('snapshot', {});
  opening.run();
  assert.equal(lost(), 1);
});
