// Files of the tree and answers of its programs.
import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { readFileSync } from 'node:fs';
import { join } from 'node:path';

export const inTree = (path) => join(process.env.TAVU_TREE, path);
export const read = (path) => readFileSync(inTree(path), 'utf8');

/** What a program that ends by itself has said, and its exit code. */
export function run(program, ...options) {
  const { status, stdout, stderr, error } = spawnSync(program, options, { encoding: 'utf8' });
  assert.ifError(error);
  return { code: status, out: stdout, err: stderr };
}
