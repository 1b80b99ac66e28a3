import assert from 'node:assert/strict';
import { test } from 'node:test';

import { ApiError } from '../../../src/player/web/js/api.js';
import { wordsOf } from '../../../src/player/web/js/words.js';

test('a title that says nothing gives way to the sentence below it', () => {
  assert.deepEqual(wordsOf('Error', 'Unable to browse in to the folder.'), {
    title: 'Unable to browse in to the folder.',
    text: '',
  });
  assert.deepEqual(wordsOf(undefined, 'Why'), { title: 'Why', text: '' });
});

test('a title that says something stays, and one alone too', () => {
  assert.deepEqual(wordsOf('Not in your plan', 'Why'), { title: 'Not in your plan', text: 'Why' });
  assert.deepEqual(wordsOf('Error', ''), { title: 'Error', text: '' });
});

test('failures of the player speak in the same way', () => {
  const error = new ApiError({ title: 'Error', detail: 'Why' });
  assert.equal(error.title, 'Why');
  assert.equal(error.detail, '');
});
