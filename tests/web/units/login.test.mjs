import assert from 'node:assert/strict';
import { test } from 'node:test';

import { mayRenew, renewalLimit } from '../../../src/player/web/js/login.js';

const waiting = { state: 'waiting', endsAt: 10000 };
const ask = (more) =>
  mayRenew({ login: waiting, lastEndsAt: 10000, now: 10000, visible: true, renewals: 0, ...more });

test('a new code comes when the shown one has run out', () => {
  assert.equal(ask(), true);
  assert.equal(ask({ now: 9999 }), false);
});

test('a new code comes when the player has taken the old one back at its end', () => {
  assert.equal(ask({ login: { state: 'failed' } }), true);
  assert.equal(ask({ login: { state: 'loggedOut' } }), true);
});

test("a refusal before the end is the user's answer, not a reason for a new code", () => {
  assert.equal(ask({ login: { state: 'failed' }, now: 3000 }), false);
});

test('signing out does not bring a code', () => {
  assert.equal(ask({ login: { state: 'loggedOut' }, lastEndsAt: 0 }), false);
});

test('nobody looking, no new code; nor for ever', () => {
  assert.equal(ask({ visible: false }), false);
  assert.equal(ask({ renewals: renewalLimit }), false);
});
