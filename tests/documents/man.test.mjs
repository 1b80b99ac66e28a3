// The man pages against what the programs say of themselves.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { inTree, read, run } from './tree.mjs';

const programs = {
  'tavu-player': process.env.TAVU_PLAYER,
  'tavu-ctl': process.env.TAVU_CTL,
  'amazon-music-emulator': process.env.TAVU_EMULATOR,
};

/** The first line of each tagged paragraph, without fonts. */
function tags(page) {
  const lines = read(page).split('\n');
  const tagged = lines.filter((line, index) => lines[index - 1] === '.TP');
  return tagged.map((line) => line.replace(/^\.[BIR]+ /, '').replace(/\\f./g, '').replace(/\\-/g, '-')
    .replace(/"/g, ''));
}

const options = (line) => line.match(/(?<![\w-])--?[a-z][a-z-]*/g) ?? [];

for (const [name, program] of Object.entries(programs)) {
  const page = `docs/man/${name}.1`;
  const help = run(program, '--help').out;

  test(`${name}: each option of --help has its paragraph, and each paragraph its option`, () => {
    const offered = help.split('\n').filter((line) => /^ {2}-/.test(line))
      .flatMap((line) => options(line.trim().split(/ {2,}/)[0]));
    const described = tags(page).filter((line) => line.startsWith('-')).flatMap(options);
    assert.ok(offered.includes('--help') && offered.includes('--version'));
    assert.deepEqual(described.sort(), offered.sort());
  });

  test(`${name}: each option that the page describes is one that the program takes`, () => {
    assert.equal(run(program, '-h').code, 0);
    assert.match(run(program, '-v').out, /\d+\.\d+\.\d+/);
    assert.equal(run(program, '--not-an-option').code, 2);
  });

  test(`${name}: the page is well formed`, () => {
    assert.deepEqual(run('groff', '-man', '-Tutf8', '-ww', '-z', inTree(page)),
      { code: 0, out: '', err: '' });
    assert.match(read(page), new RegExp(`^\\.SH NAME\\n${name} \\\\- `, 'm'));
  });
}

test('tavu-ctl: the exit codes are those of --help', () => {
  const offered = [...run(programs['tavu-ctl'], '--help').out.matchAll(/^ {2}(\d): /gm)];
  const described = [...read('docs/man/tavu-ctl.1').matchAll(/^\.TP\n\.B (\d)$/gm)];
  assert.ok(offered.length > 4);
  assert.deepEqual(described.map((match) => match[1]), offered.map((match) => match[1]));
});

test('tavu-ctl: each command of --help has its paragraph, and each paragraph its command', () => {
  const help = run(programs['tavu-ctl'], '--help').out;
  const offered = help.slice(help.indexOf('Commands:'), help.indexOf('Options:'))
    .split('\n').map((line) => /^ {2}(\w+) /.exec(line)?.[1]).filter(Boolean);
  const text = read('docs/man/tavu-ctl.1');
  const part = text.slice(text.indexOf('.SH COMMANDS'), text.indexOf('.SH EXIT STATUS'));
  const described = [...part.matchAll(/^\.TP\n\.B[IR]* (\w+)/gm)].map((match) => match[1]);
  assert.ok(offered.length > 10);
  assert.deepEqual(described, offered);
});

test('amazon-music-emulator: each option of --help stands in its document', () => {
  const text = read('docs/service-protocol.md');
  const offered = [...run(programs['amazon-music-emulator'], '--help').out.matchAll(/^ {2}(--[a-z-]+)/gm)];
  assert.ok(offered.length > 20);
  for (const [, option] of offered) assert.ok(text.includes(`\`${option}`), option);
});
