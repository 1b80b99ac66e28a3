import assert from 'node:assert/strict';
import { test } from 'node:test';

import {
  clock,
  codeGroups,
  remaining,
  shortTime,
  spokenTime,
} from '../../../src/player/web/js/format.js';

test('a clock time has hours only when there are any', () => {
  assert.equal(clock(0), '0:00');
  assert.equal(clock(83999), '1:23');
  assert.equal(clock(3723000), '1:02:03');
});

test('what is not a time shows as nothing', () => {
  for (const value of [undefined, NaN, Infinity, -1]) assert.equal(clock(value), '');
  assert.equal(spokenTime(NaN), '');
});

test('a spoken time names its units and leaves out empty ones', () => {
  assert.equal(spokenTime(83000), '1 min 23 s');
  assert.equal(spokenTime(3600000), '1 h');
  assert.equal(spokenTime(0), '0 s');
});

test('the countdown counts minutes until the last one, then seconds, and stops at none', () => {
  assert.equal(remaining(600000), '10 min');
  assert.equal(remaining(61000), '2 min');
  assert.equal(remaining(60000), '60 s');
  assert.equal(remaining(400), '1 s');
  assert.equal(remaining(-5000), '0 s');
});

test('a code is shown in the groups in which it was written', () => {
  assert.deepEqual(codeGroups('ABCD-EFGH'), ['ABCD', 'EFGH']);
  assert.deepEqual(codeGroups('12 34 56'), ['12', '34', '56']);
});

test('a code without groups is cut by fours, or by threes where that comes out even', () => {
  assert.deepEqual(codeGroups('ABCDEFGH'), ['ABCD', 'EFGH']);
  assert.deepEqual(codeGroups('ABCDEF'), ['ABC', 'DEF']);
  assert.deepEqual(codeGroups('ABCDEFG'), ['ABCD', 'EFG']);
  assert.deepEqual(codeGroups('ABCD'), ['ABCD']);
  assert.deepEqual(codeGroups(undefined), []);
});

test('a time of today has no date, an older one has, and a broken one is empty', () => {
  const now = new Date(2024, 4, 3, 18, 0);
  const today = shortTime(new Date(2024, 4, 3, 9, 30).toISOString(), now);
  const before = shortTime(new Date(2023, 0, 2, 9, 30).toISOString(), now);
  assert.match(today, /30/);
  assert.doesNotMatch(today, /2024/);
  assert.match(before, /2023/);
  assert.equal(shortTime('yesterday', now), '');
});
