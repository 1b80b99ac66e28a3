import assert from 'node:assert/strict';
import { test } from 'node:test';

import { keepShell, shellFiles } from '../../../src/player/web/js/shell.js';

const location = { origin: 'http://player' };
const loaded = [
  { name: 'http://player/js/main.js' },
  { name: 'http://player/js/main.js?x=1' },
  { name: 'http://player/api/v1/state' },
  { name: 'http://player/api/v1/artwork/1?token=secret' },
  { name: 'http://elsewhere/js/main.js' },
];

test('the shell is the own files of the page and never an answer of the player', () => {
  assert.deepEqual(shellFiles(loaded, location), ['/js/main.js']);
});

test('the worker is told the files once it is ready', async () => {
  const told = [];
  const active = { postMessage: (message) => told.push(message) };
  const serviceWorker = { register: async () => {}, ready: Promise.resolve({ active }) };
  await keepShell({ serviceWorker, performance: { getEntriesByType: () => loaded }, location });
  assert.deepEqual(told, [{ shell: ['/js/main.js'] }]);
});

test('a browser that allows no worker costs nothing but the offline page', async () => {
  await keepShell({});
  const refuse = async () => {
    throw new Error('not secure');
  };
  await keepShell({ serviceWorker: { register: refuse } });
});
