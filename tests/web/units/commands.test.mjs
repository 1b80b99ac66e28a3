import assert from 'node:assert/strict';
import { test } from 'node:test';

import { createActions } from '../../../src/player/web/js/actions.js';
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

test('no row stays at starting for ever', async () => {
  const { store, actions } = broken();
  const pressed = actions.play({ ref: 'r', title: 'Song' });
  assert.equal(store.state.starting, 'r');
  await assert.rejects(pressed, bug);
  assert.equal(store.state.starting, '');
});
