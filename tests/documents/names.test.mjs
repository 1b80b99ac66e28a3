// What the documents name is there: files and folders of the tree, links between documents.
import assert from 'node:assert/strict';
import { existsSync, readdirSync } from 'node:fs';
import { dirname, join } from 'node:path';
import { test } from 'node:test';
import { inTree, read } from './tree.mjs';

const documents = ['README.md', 'CONTRIBUTING.md', 'CHANGELOG.md',
  ...readdirSync(inTree('docs')).filter((name) => name.endsWith('.md')).map((name) => `docs/${name}`)];

const folders = readdirSync(inTree('.'), { withFileTypes: true })
  .filter((entry) => entry.isDirectory() && !entry.name.startsWith('.') && entry.name !== 'build')
  .map((entry) => entry.name).join('|');

const withoutCode = (text) => text.replace(/^```.*?^```$/gms, '');

for (const document of documents) {
  test(`${document}: every file and folder that it names is in the tree`, () => {
    const named = read(document).matchAll(new RegExp(`(?<![\\w/.~<=-])(?:${folders})/[\\w./-]*\\w`, 'g'));
    for (const [path] of named) assert.ok(existsSync(inTree(path)), path);
  });

  test(`${document}: every link leads somewhere`, () => {
    for (const [, target] of withoutCode(read(document)).matchAll(/\]\(([^)#\s]+)[^)]*\)/g)) {
      assert.ok(/^https?:/.test(target) || existsSync(inTree(join(dirname(document), target))), target);
    }
  });
}
