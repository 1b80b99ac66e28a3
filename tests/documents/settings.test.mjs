// docs/settings.md against the settings that the player knows.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { read, run } from './tree.mjs';

const player = process.env.TAVU_PLAYER;

/** Rows of the document's tables: | `section.name` | kind | default | example | meaning | */
function documented() {
  const rows = read('docs/settings.md').split('\n').filter((line) => line.startsWith('| `'));
  return rows.map((row) => {
    const cells = row.split('|').slice(1, -1).map((cell) => cell.trim());
    assert.equal(cells.length, 5, row);
    const [key, kind, initial, example, meaning] = cells;
    return { key: bare(key), kind, initial: bare(initial), example: bare(example), meaning };
  });
}

const bare = (cell) => cell.replace(/^`(.*)`$/, '$1');

/** Settings of a file as the player prints it; commented out are those that are at their default. */
function known() {
  const settings = [];
  let section = '';
  for (const line of run(player, '--config', '/dev/null', '--print-config').out.split('\n')) {
    section = /^\[(\w+)\]$/.exec(line)?.[1] ?? section;
    const [, name, value] = /^#([a-z-]+) =(.*)$/.exec(line) ?? [];
    if (name) settings.push({ key: `${section}.${name}`, initial: value.trim() });
  }
  return settings;
}

test('every setting of the player is in the document, in its order, with its default', () => {
  const settings = known();
  assert.ok(settings.length > 20);
  assert.deepEqual(documented().map(({ key, initial }) => ({ key, initial })), settings);
});

test('every example is a value that the player takes, and another than the default', () => {
  const settings = documented();
  const assignments = settings.flatMap(({ key, example }) => ['-o', `${key}=${example}`]);
  const printed = run(player, '--config', '/dev/null', ...assignments, '--print-config');
  assert.equal(printed.code, 0, printed.err);
  for (const { key, initial, example } of settings) {
    assert.notEqual(example, initial, key);
    assert.ok(printed.out.split('\n').includes(`${key.split('.')[1]} = ${example}`), printed.out);
  }
});

test('every setting has a kind and a meaning', () => {
  for (const { key, kind, meaning } of documented()) assert.ok(kind && meaning, key);
});
