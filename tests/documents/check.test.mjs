// ./check says what it can do, and refuses what it cannot before it installs or builds anything.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { inTree, run } from './tree.mjs';

const check = (...options) => run(inTree('check'), ...options);

test('--help describes every option', () => {
  const { code, out } = check('--help');
  assert.equal(code, 0);
  for (const option of ['--fuzz SECONDS', '--lint']) assert.ok(out.includes(`./check ${option}`), out);
});

for (const [options, reason] of [
  [['--lent'], 'There is no option --lent.'],
  [['fuzz'], 'There is no option fuzz.'],
  [['--fuzz'], '--fuzz takes a number of seconds, not "".'],
  [['--fuzz', 'long'], '--fuzz takes a number of seconds, not "long".'],
  [['--fuzz', '0'], '--fuzz takes a number of seconds, not "0".'],
  [['--lint', '--fuzz', '5'], 'Either --fuzz or --lint, please.'],
]) {
  test(`"${options.join(' ')}" is refused`, () => {
    assert.deepEqual(check(...options), { code: 2, out: '', err: `check: ${reason} Try --help.\n` });
  });
}
