import assert from 'node:assert/strict';
import { test } from 'node:test';

import { createActions } from '../../../src/player/web/js/actions.js';
import { initialState, reduce } from '../../../src/player/web/js/reducer.js';
import { createStore } from '../../../src/player/web/js/store.js';

/** Actions whose searches wait for `answer(text)`; `shown` are the places they led to. */
function searching() {
  const waiting = new Map();
  const router = {
    current: { place: 'browse', path: '', text: '', trail: [] },
    shown: [],
    push(entry) {
      this.current = entry;
      this.shown.push(entry.text);
    },
    replace(entry) {
      this.push(entry);
    },
  };
  const api = {
    search: (text) =>
      new Promise((done) => {
        waiting.set(text, () => done({ path: `/${text}` }));
      }),
  };
  const store = createStore(reduce, { ...initialState, connection: 'live' });
  const { search } = createActions({ api, store, router });
  return { search, router, answer: (text) => waiting.get(text)() };
}

test('a search shows what it found', async () => {
  const { search, router, answer } = searching();
  const found = search(' light ');
  answer('light');
  assert.equal(await found, true);
  assert.deepEqual(router.shown, ['light']);
  assert.equal(await search('  '), false);
});

test('a search that ends late leads nobody away from where they went', async () => {
  const { search, router, answer } = searching();
  const found = search('light');
  router.current = { place: 'browse', path: '/albums', text: '', trail: [] };
  answer('light');
  await found;
  assert.deepEqual(router.shown, []);
});

test('of two searches the later one shows, whichever ends first', async () => {
  const { search, router, answer } = searching();
  const first = search('light');
  const second = search('night');
  answer('night');
  await second;
  answer('light');
  await first;
  assert.deepEqual(router.shown, ['night']);
});
