import assert from 'node:assert/strict';
import { test } from 'node:test';

import { createActions } from '../../../src/player/web/js/actions.js';
import { initialState, reduce } from '../../../src/player/web/js/reducer.js';
import { createStore } from '../../../src/player/web/js/store.js';

const row = { ref: 'r', title: 'Ask me tomorrow', type: 102 };

/** Presses the row; its answer comes `ms` later. Tells what came of it. */
async function press(answer, ms) {
  let now = 0;
  const store = createStore(reduce, { ...initialState, connection: 'live' });
  const api = {
    activate: async () => {
      now += ms;
      return answer;
    },
  };
  const actions = createActions({ api, store, now: () => now });
  const done = [];
  await actions.activate(row, {
    close: () => done.push('closed'),
    open: (path) => done.push(`opened ${path}`),
  });
  return { done, notes: store.state.toasts.map(({ title }) => title) };
}

test('an action closes its screen, or opens the next', async () => {
  assert.deepEqual(await press({ close: true }, 300), { done: ['closed'], notes: [] });
  assert.deepEqual(await press({ result: { path: '/next' } }, 30000), {
    done: ['opened /next'],
    notes: [],
  });
  assert.deepEqual(await press({}, 300), { done: [], notes: [] });
});

test('an answer that closes the screen late leaves a note: perhaps there was none', async () => {
  assert.deepEqual(await press({ close: true }, 30000), {
    done: ['closed'],
    notes: ['The service took long to answer “Ask me tomorrow”'],
  });
});
