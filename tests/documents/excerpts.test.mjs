// Code in the documents is code of the tree. A fence that names a file ("```cpp examples/...") holds
// lines of it; a line of "..." stands for what is left out.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { read } from './tree.mjs';

const document = 'docs/host-framework.md';

function* excerpts() {
  for (const [, file, code] of read(document).matchAll(/^```\w+ (\S+)\n(.*?)^```$/gms)) {
    yield { file, pieces: code.split(/^[ ]*\.\.\.\n/m).filter((piece) => piece.trim()) };
  }
}

test('every excerpt stands in the file that it names, its pieces in their order', () => {
  let count = 0;
  for (const { file, pieces } of excerpts()) {
    const text = read(file);
    let from = 0;
    for (const piece of pieces) {
      const at = text.indexOf(piece, from);
      assert.ok(at >= 0, `${file} has no such lines:\n${piece}`);
      from = at + piece.length;
      count += 1;
    }
  }
  assert.ok(count >= 8);
});
