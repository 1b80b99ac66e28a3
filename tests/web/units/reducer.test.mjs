import assert from 'node:assert/strict';
import { test } from 'node:test';

import {
  hasTrack,
  initialState,
  positionAt,
  reduce,
  unreadCount,
} from '../../../src/player/web/js/reducer.js';

const run = (events, state = initialState) => events.reduce(reduce, state);
const player = (more) => ({ state: 2, position: 1000, duration: 60000, title: 'A', ...more });
const message = (id, more) => ({ id, kind: 'error', title: `Title ${id}`, text: 'Text', ...more });
const snapshot = (data, now = 0) => ({ type: 'snapshot', now, data });

test('a snapshot makes the page live and whole', () => {
  const state = run([
    snapshot({
      service: { name: 'S' },
      login: { state: 'loggedIn' },
      player: player(),
      messages: [message(1)],
    }),
  ]);
  assert.equal(state.connection, 'live');
  assert.equal(state.service.name, 'S');
  assert.equal(state.player.title, 'A');
  assert.equal(state.messages.length, 1);
  assert.equal(state.toasts.length, 0, 'old messages do not pop up again');
});

test('the position runs on while the track plays and stops at its end', () => {
  const { player: now } = run([{ type: 'player', now: 500, data: player() }]);
  assert.equal(positionAt(now, 500), 1000);
  assert.equal(positionAt(now, 2500), 3000);
  assert.equal(positionAt(now, 500000), 60000);
});

test('the position rests while the player is not playing', () => {
  for (const state of [0, 1, 3]) {
    const paused = run([{ type: 'player', now: 0, data: player({ state }) }]).player;
    assert.equal(positionAt(paused, 9000), 1000);
  }
  assert.equal(positionAt(null, 5), 0);
});

test('a position event restarts the count from its own moment', () => {
  const { player: now } = run([
    { type: 'player', now: 0, data: player() },
    { type: 'position', now: 3000, data: { position: 30000 } },
  ]);
  assert.equal(positionAt(now, 4000), 31000);
});

test('a countdown follows the seconds that the player gave, not its wall clock', () => {
  const state = run([
    {
      type: 'login',
      now: 1000,
      data: { state: 'waiting', expiresIn: 60, expiresAt: '1999-01-01T00:00:00Z' },
    },
  ]);
  assert.equal(state.login.endsAt, 61000);
});

test('a message is shown once and kept', () => {
  const state = run([
    { type: 'message', now: 0, data: message(1) },
    { type: 'message', now: 0, data: message(1) },
  ]);
  assert.equal(state.messages.length, 1);
  assert.equal(state.toasts.length, 1);
});

test('no more than twenty messages are kept, the newest', () => {
  const events = Array.from({ length: 25 }, (_, i) => ({
    type: 'message',
    now: 0,
    data: message(i),
  }));
  const { messages } = run(events);
  assert.equal(messages.length, 20);
  assert.equal(messages[0].id, 5);
});

test('a failure that a dialog shows does not also pass by as a note', () => {
  const toast = { type: 'message', now: 0, data: message(1, { text: 'Why' }) };
  const screen = { type: 'screen', screen: { title: 'Other words', text: 'Why' } };
  assert.equal(run([screen, toast]).toasts.length, 0);
  assert.equal(run([toast, screen]).toasts.length, 0);
  assert.equal(run([toast, screen]).messages.length, 1, 'but it is kept');
});

test('what an answer and an event tell is one note, however far apart they come', () => {
  const own = (now) => ({ type: 'toast', now, toast: { id: `own-${now}`, title: 'T', text: 'x' } });
  const told = (now, id) => ({ type: 'message', now, data: message(id, { title: 'T', text: 'x' }) });
  assert.equal(run([told(0, 1), own(9000)]).toasts.length, 1);
  assert.equal(run([own(0), told(9000, 1)]).toasts.length, 1);
  assert.equal(run([told(0, 1), own(9000), told(18000, 2)]).toasts.length, 2, 'pressed again');
});

test('the same note twice in a row is one note, later it is another', () => {
  const toast = (now) => ({ type: 'toast', now, toast: { id: now, title: 'T', text: 'x' } });
  assert.equal(run([toast(0), toast(1000)]).toasts.length, 1);
  assert.equal(run([toast(0), toast(9000)]).toasts.length, 2);
});

test('messages count as unread until they were read', () => {
  const state = run([
    { type: 'message', now: 0, data: message(1) },
    { type: 'readAll' },
    { type: 'message', now: 0, data: message(2) },
  ]);
  assert.equal(unreadCount(state), 1);
});

test('an event of an unknown kind changes nothing', () => {
  assert.equal(reduce(initialState, { type: 'surprise' }), initialState);
});

test('an idle player without a title has no track to show', () => {
  assert.equal(hasTrack(player()), true);
  assert.equal(hasTrack({ state: 0, title: '' }), false);
  assert.equal(hasTrack(null), false);
});

test('the queue is asked for again after it changed, and after every new start', () => {
  const changed = run([{ type: 'queue', data: {} }]);
  assert.notEqual(changed.queueVersion, initialState.queueVersion);
  assert.notEqual(run([snapshot({})], changed).queueVersion, changed.queueVersion);
  assert.equal(run([{ type: 'player', now: 0, data: player() }]).queueVersion, 0);
});
