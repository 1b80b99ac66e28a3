// Rules that the page's files keep: what may stand in them, and what must not.
import assert from 'node:assert/strict';
import { readdirSync, readFileSync } from 'node:fs';
import path from 'node:path';
import { test } from 'node:test';
import { fileURLToPath } from 'node:url';

import en from '../../../src/player/web/js/texts/en.js';
import { pickLanguage, t } from '../../../src/player/web/js/text.js';

const root = path.resolve(path.dirname(fileURLToPath(import.meta.url)), '../../..');
const web = path.join(root, 'src/player/web');
const read = (file) => readFileSync(file, 'utf8');
const filesIn = (folder, end) =>
  readdirSync(folder, { withFileTypes: true }).flatMap((entry) => {
    const full = path.join(folder, entry.name);
    if (entry.isDirectory()) return filesIn(full, end);
    return entry.name.endsWith(end) ? [full] : [];
  });
const scripts = filesIn(path.join(web, 'js'), '.js');
const styles = filesIn(path.join(web, 'css'), '.css');

test('the lock files name no registry', () => {
  for (const folder of [web, path.join(root, 'tests/web')]) {
    const { packages } = JSON.parse(read(path.join(folder, 'package-lock.json')));
    for (const [name, entry] of Object.entries(packages)) {
      assert.equal(entry.resolved, undefined, name);
      if (name) assert.match(entry.integrity, /^sha512-/, name);
    }
  }
});

test('versions are exact', () => {
  for (const folder of [web, path.join(root, 'tests/web')]) {
    const { dependencies, devDependencies } = JSON.parse(read(path.join(folder, 'package.json')));
    for (const version of Object.values({ ...dependencies, ...devDependencies })) {
      assert.match(version, /^\d+\.\d+\.\d+$/);
    }
  }
});

/** The lines of each function that begins on a line of its own, up to the end of its indentation. */
function functionsIn(source) {
  const lines = source.split('\n');
  const begins =
    /^(\s*)(?:export )?(?:async )?(?:function (\w+)|const (\w+) = (?:async )?\(?[^=]*\)? =>.*[{(]$|(?:async )?(\w+)\(.*\) \{$)/;
  return lines.flatMap((line, at) => {
    const match = begins.exec(line);
    if (!match || /^\s*(if|for|while|switch)\b/.test(line)) return [];
    const end = lines.findIndex((l, i) => i > at && new RegExp(`^${match[1]}[})]`).test(l));
    return [{ name: match[2] ?? match[3] ?? match[4], lines: (end < 0 ? at : end) - at + 1 }];
  });
}

test('functions are short enough to be read at a glance', () => {
  const found = scripts.flatMap((file) =>
    functionsIn(read(file)).map((each) => ({ file: path.basename(file), ...each })),
  );
  assert.ok(found.length > 150, `${found.length}`);
  assert.deepEqual(
    found.filter(({ lines }) => lines > 60),
    [],
  );
});

test('there is no inline script or style', () => {
  const html = read(path.join(web, 'index.html'));
  assert.doesNotMatch(html, /<style|\sstyle=|\son\w+=|<script(?![^>]*\ssrc=)/);
  for (const file of scripts)
    assert.doesNotMatch(read(file), /<style|\sstyle="|innerHTML|eval\(/, file);
});

test('nothing is loaded from elsewhere', () => {
  for (const file of [...styles, path.join(web, 'index.html')]) {
    assert.doesNotMatch(read(file), /(src|href)="https?:|url\(["']?https?:|@import/, file);
  }
});

test('every text that is used is written, and every written one is used', () => {
  const source = scripts
    .filter((file) => !file.includes('texts'))
    .map(read)
    .join('\n');
  const computed = /^(messages\.kind|audio\.stage|player\.repeat|settings\.key|place|login|row)\./;
  const used = new Set(
    [...source.matchAll(/'([a-z]+(?:\.[A-Za-z]+)*)'/g)].map((match) => match[1]),
  );
  for (const [, id] of source.matchAll(/\bt\('([^']+)'/g)) assert.ok(id in en, id);
  assert.deepEqual(
    Object.keys(en).filter((id) => !used.has(id) && !computed.test(id)),
    [],
  );
});

test('the texts speak the first of the wanted languages that there is', () => {
  assert.equal(pickLanguage(['xx', 'en-GB']), 'en');
  assert.equal(pickLanguage(undefined), 'en');
  assert.equal(t('search.empty', { text: '{x} & $&' }), 'Nothing found for “{x} & $&”.');
});

test('type comes from the one scale', () => {
  for (const file of styles) {
    for (const [, value] of read(file).matchAll(/font-size:\s*([^;]+);/g)) {
      assert.match(value, /^var\(--text-(2xs|xs|s|m|l|xl|2xl|3xl|4xl)\)$/, file);
    }
  }
});

test('colours come from the one palette', () => {
  const literal = /#[0-9a-f]{3,8}\b/gi;
  for (const file of styles.filter((name) => !name.endsWith('tokens.css'))) {
    const found = read(file).match(literal) ?? [];
    assert.deepEqual(
      found.filter((colour) => colour !== '#fff'),
      [],
      file,
    );
  }
});
