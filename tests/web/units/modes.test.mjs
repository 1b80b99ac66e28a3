import assert from 'node:assert/strict';
import { test } from 'node:test';

import {
  isSupported,
  modeParts,
  nextRepeat,
  repeatSupported,
  shuffleSupported,
  toggledShuffle,
} from '../../../src/player/web/js/modes.js';

const all = {
  shuffle: true,
  repeatOne: true,
  repeatAll: true,
  shuffleRepeatOne: true,
  shuffleRepeatAll: true,
};

test('the six play modes are a shuffle switch and a repeat choice', () => {
  assert.deepEqual(
    [0, 1, 2, 3, 4, 5].map((mode) => modeParts(mode)),
    [
      { shuffle: false, repeat: 'off' },
      { shuffle: true, repeat: 'off' },
      { shuffle: false, repeat: 'one' },
      { shuffle: true, repeat: 'one' },
      { shuffle: false, repeat: 'all' },
      { shuffle: true, repeat: 'all' },
    ],
  );
  assert.deepEqual(modeParts(17), { shuffle: false, repeat: 'off' });
});

test('shuffle keeps the repeat choice where the player can do both', () => {
  assert.equal(toggledShuffle(4, all), 5);
  assert.equal(toggledShuffle(3, all), 2);
});

test('shuffle gives up repeat where the player cannot do both', () => {
  assert.equal(toggledShuffle(2, { ...all, shuffleRepeatOne: false }), 1);
});

test('shuffle that is not supported changes nothing', () => {
  assert.equal(toggledShuffle(4, { repeatAll: true }), 4);
});

test('repeat goes round off, all and one', () => {
  assert.deepEqual(
    [0, 4, 2].map((mode) => nextRepeat(mode, all)),
    [4, 2, 0],
  );
  assert.deepEqual(
    [1, 5, 3].map((mode) => nextRepeat(mode, all)),
    [5, 3, 1],
  );
});

test('repeat leaves out what is not supported', () => {
  assert.equal(nextRepeat(0, { repeatOne: true }), 2);
  assert.equal(nextRepeat(0, {}), 0);
  assert.equal(nextRepeat(1, { shuffle: true, shuffleRepeatAll: true }), 5);
});

test('a station supports normal play only', () => {
  assert.equal(shuffleSupported({}), false);
  assert.equal(repeatSupported(undefined), false);
  assert.equal(isSupported(0, undefined), true);
});
