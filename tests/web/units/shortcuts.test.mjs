import assert from 'node:assert/strict';
import { test } from 'node:test';

import { shortcutFor, takesKeys } from '../../../src/player/web/js/shortcuts.js';
import { createPreferences } from '../../../src/player/web/js/preferences.js';

test('each shortcut is one key without modifiers', () => {
  assert.equal(shortcutFor({ key: '/' }), 'search');
  assert.equal(shortcutFor({ key: 'p', ctrlKey: true }), null);
  assert.equal(shortcutFor({ key: 'x' }), null);
  assert.equal(shortcutFor({ key: 'n', repeat: true }), null);
});

test('letters typed into a field are text, not shortcuts', () => {
  assert.equal(takesKeys({ tagName: 'INPUT', type: 'search' }), true);
  assert.equal(takesKeys({ tagName: 'INPUT', type: 'range' }), false);
  assert.equal(takesKeys({ tagName: 'BUTTON' }), false);
  assert.equal(takesKeys({ tagName: 'P', isContentEditable: true }), true);
});

test('the choice about shortcuts is kept', () => {
  const kept = new Map();
  const storage = {
    getItem: (key) => kept.get(key) ?? null,
    setItem: (key, value) => kept.set(key, value),
  };
  assert.equal(createPreferences(storage).shortcuts, true);
  createPreferences(storage).shortcuts = false;
  assert.equal(createPreferences(storage).shortcuts, false);
});

test('a closed or broken storage costs the memory, not the page', () => {
  const closed = {
    getItem() {
      throw new Error();
    },
    setItem() {
      throw new Error();
    },
  };
  const preferences = createPreferences(closed);
  preferences.shortcuts = false;
  assert.equal(preferences.shortcuts, false);
  assert.equal(createPreferences({ getItem: () => '{' }).shortcuts, true);
});
