// A program that runs to its end: what it said and how it ended.
import { spawn } from 'node:child_process';
import assert from 'node:assert/strict';

/** Far more than any of them takes, so that one that does not end is told from a slow one. */
const endMs = 60000;

const finding = /(ERROR: \w+Sanitizer|runtime error:)[^\n]*/;

export function run(file, options, { env = {}, cwd } = {}) {
  return new Promise((done, fail) => {
    const child = spawn(file, options, {
      cwd, env: { ...process.env, ...env }, stdio: ['ignore', 'pipe', 'pipe'],
    });
    const result = { out: '', err: '' };
    const late = setTimeout(() => child.kill('SIGKILL'), endMs);
    for (const [stream, name] of [[child.stdout, 'out'], [child.stderr, 'err']]) {
      stream.setEncoding('utf8');
      stream.on('data', (text) => { result[name] += text; });
    }
    child.once('error', fail);
    child.once('close', (code, signal) => {
      clearTimeout(late);
      done({ ...result, code, signal });
    });
  });
}

/** A program that refuses to start: one message on one line, this exit code, nothing else. */
export function assertRefused(result, code, ...messages) {
  const told = JSON.stringify(result);
  assert.equal(result.signal, null, told);
  assert.equal(finding.exec(result.err)?.[0], undefined, told);
  assert.equal(result.code, code, told);
  assert.equal(result.out, '', told);
  assert.equal(result.err.trimEnd().split('\n').length, 1, told);
  assert.doesNotMatch(result.err.trimEnd(), /[\x00-\x1f\x7f]/, told);
  for (const message of messages) {
    if (message instanceof RegExp) assert.match(result.err, message);
    else assert.ok(result.err.includes(message), told);
  }
}
