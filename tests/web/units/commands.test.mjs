import assert from 'node:assert/strict';
import { test } from 'node:test';

import { createActions } from '../../../src/player/web/js/actions.js';
import { ApiError } from '../../../src/player/web/js/api.js';
import { initialState, reduce } from '../../../src/player/web/js/reducer.js';
import { createStore } from '../../../src/player/web/js/store.js';

const bug = new TypeError('a bug of the page');

/** The page with a player whose answers the page cannot deal with. */
function broken() {
  const store = createStore(reduce, { ...initialState, connection: 'live' });
  const fail = async () => {
    throw bug;
  };
  return { store, actions: createActions({ api: { command: fail, play: fail }, store, now: () => 0 }) };
}

test('no button stays busy for ever', async () => {
  const { store, actions } = broken();
  const pressed = actions.next();
  assert.equal(store.state.busy.next, 1);
  await assert.rejects(pressed, bug);
  assert.equal(store.state.busy.next, 0);
});

/** The page with a player that answers a command when `answer` is called, and tells when told to. */
function patient() {
  const store = createStore(reduce, { ...initialState, connection: 'live' });
  const tell = (mode) => store.dispatch({ type: 'player', data: { mode }, now: 0 });
  const sent = [];
  const waiting = [];
  const api = {
    command: (name, body) =>
      new Promise((done, fail) => {
        sent.push(body);
        waiting.push({ done, fail });
      }),
  };
  const settled = () => new Promise(setImmediate);
  const answer = async (error) => {
    const { done, fail } = waiting.shift();
    if (error) fail(error);
    else done({});
    await settled();
  };
  tell(0);
  return { sent, answer, tell, actions: createActions({ api, store, now: () => 0 }) };
}

const oneMore = (mode) => mode + 1;

test('a second press on a mode goes on from the first, however late that is answered', async () => {
  const { sent, answer, tell, actions } = patient();
  actions.setMode(oneMore);
  actions.setMode(oneMore);
  assert.deepEqual(sent, [{ mode: 1 }], 'the second waits, so as not to overtake the first');
  await answer();
  tell(1);
  actions.setMode(oneMore);
  assert.deepEqual(sent, [{ mode: 1 }, { mode: 2 }]);
  await answer();
  await answer();
  actions.setMode(oneMore); // answered, but not told yet
  assert.deepEqual(sent.slice(2), [{ mode: 3 }, { mode: 4 }]);
});

test('a mode that the player refuses, or that somebody else changes, is not gone on from', async () => {
  const { sent, answer, tell, actions } = patient();
  actions.setMode(() => 3);
  await answer(new ApiError({ title: 'No' }));
  actions.setMode(oneMore);
  await answer();
  tell(1);
  tell(0);
  actions.setMode(oneMore);
  assert.deepEqual(sent, [{ mode: 3 }, { mode: 1 }, { mode: 1 }]);
});

test('of the volumes that wait for an answer only the newest is sent', async () => {
  const { sent, answer, actions } = patient();
  for (const volume of [10, 20, 30]) actions.setVolume(volume);
  await answer();
  await answer();
  assert.deepEqual(sent, [{ volume: 10 }, { volume: 30 }]);
});

test('no row stays at starting for ever', async () => {
  const { store, actions } = broken();
  const pressed = actions.play({ ref: 'r', title: 'Song' });
  assert.equal(store.state.starting, 'r');
  await assert.rejects(pressed, bug);
  assert.equal(store.state.starting, '');
});
