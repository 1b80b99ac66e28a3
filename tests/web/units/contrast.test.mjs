// Every pair of colours that the page lays on each other, in each of the four themes.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import path from 'node:path';
import { test } from 'node:test';
import { fileURLToPath } from 'node:url';

const here = path.dirname(fileURLToPath(import.meta.url));
const css = readFileSync(path.join(here, '../../../src/player/web/css/tokens.css'), 'utf8');

function declarations(block) {
  return Object.fromEntries(
    [...block.matchAll(/--([\w-]+):\s*(#[0-9a-f]+)\s*;/gi)].map((m) => [m[1], m[2]]),
  );
}

const media = [...css.matchAll(/@media ([^{]+)\{\s*:root \{([^}]+)\}/g)].map(
  ([, query, block]) => ({ query: query.trim(), values: declarations(block) }),
);
const dark = declarations(css.slice(0, css.indexOf('@media')));
const themed = (query) => media.find((entry) => entry.query === query).values;
const light = { ...dark, ...themed('(prefers-color-scheme: light)') };
const themes = {
  dark,
  light,
  'dark, high contrast': { ...dark, ...themed('(prefers-contrast: more)') },
  'light, high contrast': {
    ...light,
    ...themed('(prefers-contrast: more)'),
    ...themed('(prefers-contrast: more) and (prefers-color-scheme: light)'),
  },
};

function luminance(hex) {
  const full = hex.length === 4 ? hex.replace(/[0-9a-f]/gi, '$&$&') : hex;
  const [r, g, b] = [1, 3, 5]
    .map((i) => parseInt(full.slice(i, i + 2), 16) / 255)
    .map((c) => (c <= 0.04045 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4));
  return 0.2126 * r + 0.7152 * g + 0.0722 * b;
}

function ratio(a, b) {
  const [low, high] = [luminance(a), luminance(b)].sort((x, y) => x - y);
  return (high + 0.05) / (low + 0.05);
}

const text = [
  ...['ground', 'panel', 'raised', 'box'].flatMap((back) => [
    ['text', back],
    ['muted', back],
  ]),
  ['accent', 'ground'],
  ['accent', 'panel'],
  ['accent', 'raised'],
  ['on-accent', 'accent'],
  ['on-accent', 'accent-strong'],
  ['on-alarm', 'alarm-ground'],
  ['alarm', 'alarm-ground'],
  ['alarm', 'panel'],
  ['ground', 'alarm'],
];
const shapes = [
  ['edge', 'ground'],
  ['edge', 'panel'],
  ['accent', 'panel'],
  ['alarm', 'ground'],
];

for (const [name, colours] of Object.entries(themes)) {
  test(`words are easy to read: ${name}`, () => {
    const wanted = name.includes('high') ? 7 : 4.5;
    for (const [front, back] of text) {
      const found = ratio(colours[front], colours[back]);
      assert.ok(found >= wanted, `${front} on ${back}: ${found.toFixed(2)}`);
    }
  });

  test(`the edges of controls are easy to see: ${name}`, () => {
    for (const [front, back] of shapes) {
      const found = ratio(colours[front], colours[back]);
      assert.ok(found >= 3, `${front} on ${back}: ${found.toFixed(2)}`);
    }
  });
}

test('the ratio is that of the guidelines', () => {
  assert.equal(ratio('#000', '#fff'), 21);
  assert.equal(ratio('#767676', '#ffffff').toFixed(2), '4.54');
});
