import assert from 'node:assert/strict';
import { test } from 'node:test';

import { createRouter, formatRoute, parseRoute } from '../../../src/player/web/js/router.js';

test('a path with a nested address comes back byte for byte', () => {
  const path = '/amazonMusic/browse?url=https%3A%2F%2Fa.test%2F%3Fq%3D1%2B2%26x%23y%25&selfUrl=ü+ ';
  assert.deepEqual(parseRoute(formatRoute({ place: 'now', path, text: 'a & b' })), {
    place: 'now',
    path,
    text: 'a & b',
  });
});

test('an address that makes no sense is the root', () => {
  for (const hash of ['', '#', '#/elsewhere', '#browse?', '#/%%%']) {
    assert.deepEqual(parseRoute(hash), { place: 'browse', path: '', text: '' });
  }
});

/** Just enough of a window: a history with states and the address that goes with each. */
function fakeWindow() {
  const entries = [{ state: null, hash: '' }];
  let at = 0;
  let pop = () => {};
  return {
    location: {
      get hash() {
        return entries[at].hash;
      },
    },
    addEventListener: (name, listener) => {
      pop = listener;
    },
    history: {
      get state() {
        return entries[at].state;
      },
      pushState(state, _, hash) {
        entries.splice(at + 1, Infinity, { state, hash });
        at += 1;
      },
      replaceState(state, _, hash) {
        entries[at] = { state, hash };
      },
      back() {
        at -= 1;
        pop();
      },
    },
  };
}

test('going back restores what the entry above was opened with', () => {
  const router = createRouter(fakeWindow());
  router.push({ place: 'browse', path: '/a', row: { title: 'A' }, trail: [{ path: '' }] });
  router.push({
    place: 'browse',
    path: '/b',
    row: { title: 'B' },
    trail: [{ path: '' }, { path: '/a' }],
  });
  router.back();
  assert.equal(router.current.path, '/a');
  assert.equal(router.current.row.title, 'A');
  assert.equal(router.current.trail.length, 1);
});

test('going back from a shared address leads to the root, not out of the page', () => {
  const router = createRouter(fakeWindow());
  router.replace({ place: 'browse', path: '/deep' });
  router.back();
  assert.equal(router.current.path, '');
});

test('listeners hear of each change until they leave', () => {
  const router = createRouter(fakeWindow());
  let heard = 0;
  const leave = router.subscribe(() => {
    heard += 1;
  });
  router.push({ place: 'now' });
  leave();
  router.push({ place: 'browse' });
  assert.equal(heard, 1);
});
