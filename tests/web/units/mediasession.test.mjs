import assert from 'node:assert/strict';
import { test } from 'node:test';

import {
  followMediaSession,
  handlersOf,
  metadataOf,
  positionStateOf,
} from '../../../src/player/web/js/mediasession.js';
import { initialState, reduce } from '../../../src/player/web/js/reducer.js';
import { createStore } from '../../../src/player/web/js/store.js';

const every = { pause: true, next: true, previous: true, seek: true };
const playing = (more = {}) => ({
  state: 2,
  title: 'Gulls',
  artist: 'Mira',
  album: 'Harbour',
  artwork: '/api/v1/artwork/1',
  position: 10000,
  duration: 60000,
  receivedAt: 500,
  controls: every,
  ...more,
});

function recorder() {
  const done = [];
  const names = ['pause', 'stop', 'next', 'previous', 'seek'];
  const note = (name) => (value) => done.push(value === undefined ? name : [name, value]);
  return { done, actions: Object.fromEntries(names.map((name) => [name, note(name)])) };
}

test('the metadata are those of the track, with its picture', () => {
  assert.deepEqual(
    metadataOf(playing(), (url) => `http://player${url}`),
    {
      title: 'Gulls',
      artist: 'Mira',
      album: 'Harbour',
      artwork: [{ src: 'http://player/api/v1/artwork/1' }],
    },
  );
  assert.equal(metadataOf({ state: 0, title: '' }), null);
  assert.deepEqual(metadataOf(playing({ artwork: '' })).artwork, []);
});

test('the position runs on with the clock, in seconds', () => {
  assert.deepEqual(positionStateOf(playing(), 2500), {
    duration: 60,
    position: 12,
    playbackRate: 1,
  });
  assert.equal(positionStateOf(playing({ duration: 0 }), 0), null);
  assert.equal(positionStateOf(null, 0), null);
});

test('play and pause do what they say, whatever the player does at that moment', () => {
  const { done, actions } = recorder();
  const now = () => 500;
  handlersOf(playing(), actions, now).play();
  assert.deepEqual(done, [], 'it plays already');
  handlersOf(playing(), actions, now).pause();
  handlersOf(playing({ state: 3 }), actions, now).pause();
  assert.deepEqual(done, ['pause']);
  handlersOf(playing({ state: 3 }), actions, now).play();
  assert.deepEqual(done, ['pause', 'pause']);
});

test('seeking stays within the track, by steps and to a place', () => {
  const { done, actions } = recorder();
  const handlers = handlersOf(playing(), actions, () => 500);
  handlers.seekto({ seekTime: 42.5 });
  handlers.seekforward({});
  handlers.seekbackward({ seekOffset: 60 });
  handlers.seekto({ seekTime: 600 });
  assert.deepEqual(done, [
    ['seek', 42500],
    ['seek', 20000],
    ['seek', 0],
    ['seek', 60000],
  ]);
});

test('keys that can do nothing have no handler', () => {
  const handlers = handlersOf(playing({ controls: { pause: true }, duration: 0 }), {}, () => 0);
  const without = Object.keys(handlers).filter((name) => handlers[name] === null);
  assert.deepEqual(without.sort(), [
    'nexttrack',
    'previoustrack',
    'seekbackward',
    'seekforward',
    'seekto',
  ]);
  assert.ok(Object.values(handlersOf(null, {}, () => 0)).every((handler) => handler === null));
});

test('the session follows the player, and survives a browser that knows less', () => {
  const handlers = {};
  const session = {
    setActionHandler(name, handler) {
      if (name === 'seekto') throw new TypeError('unknown');
      handlers[name] = handler;
    },
    setPositionState(state) {
      this.position = state;
    },
  };
  const made = [];
  class Metadata {
    constructor(values) {
      Object.assign(this, values);
      made.push(values.title);
    }
  }
  const states = [];
  const store = createStore(reduce, initialState);
  followMediaSession({
    session,
    store,
    actions: recorder().actions,
    address: (url) => url,
    now: () => 0,
    silence: { follow: (state) => states.push(state) },
    Metadata,
  });
  assert.equal(session.playbackState, 'none');
  store.dispatch({ type: 'player', data: playing(), now: 0 });
  store.dispatch({ type: 'position', data: { position: 30000 }, now: 0 });
  assert.equal(session.playbackState, 'playing');
  assert.equal(session.position.position, 30);
  assert.deepEqual(made, ['Gulls'], 'a tick makes no new metadata');
  assert.equal(typeof handlers.nexttrack, 'function');
  store.dispatch({ type: 'player', data: { state: 0, title: '', controls: {} }, now: 0 });
  assert.equal(session.metadata, null);
  assert.equal(session.position, undefined);
  assert.equal(handlers.nexttrack, null);
  assert.equal(states.at(-1), 'none');
});
