// Pages and documents that come late, broken, odd or not at all.
import assert from 'node:assert/strict';
import { browseFails, browseGives, playFails, trials } from './support/trial.mjs';

const entry = trials();
const browse = (effect) => ({ kind: 'browse', ...effect });

// The way of an answer

const broken = {
  'S05 reset in the body': { effect: 'reset', after: 100 },
  'S06 closed before its length': { effect: 'cut', after: 100 },
  'S07 chunked without a last chunk': { effect: 'chunked-cut' },
  'S09 two lengths': { effect: 'lengths' },
  'S09 a length and chunks': { effect: 'lengths', form: 'length-and-chunked' },
  'S10 a bomb of gzip': { effect: 'gzip-bomb' },
  'S11 one byte more than is read': { effect: 'pad', bytes: 1048577 },
  'S11 one byte more, in chunks': { effect: 'pad', bytes: 1048577, chunked: true },
  'S12 headers without end': { effect: 'endless-headers' },
  'S12 a header of 300 KB': { effect: 'header', valueBytes: 300000 },
  'S13 not HTTP': { effect: 'garbage' },
  'S13 HTTP 0.9': { effect: 'garbage', form: 'http09' },
  'S13 closed at once': { effect: 'close' },
  'S13 reset at once': { effect: 'abort' },
};
for (const [title, effect] of Object.entries(broken)) {
  entry(title, async (house) => {
    await house.fault(browse(effect));
    await browseFails(house);
  });
}

entry('S08 more bytes than announced: the surplus is dropped with its connection', async (house) => {
  await house.fault(browse({ effect: 'surplus', times: 1 }));
  await browseGives(house, 3);
  await browseGives(house, 3);
});

for (const chunked of [false, true]) {
  entry(`S11 exactly as much as is read, ${chunked ? 'in chunks' : 'with its length'}`, async (house) => {
    await house.fault(browse({ effect: 'pad', chunked }));
    await browseGives(house, 3, 2000);
  });
}

// What an answer says

const odd = {
  'S14 an empty body': { effect: 'body' },
  'S15 cut JSON': { effect: 'bad-json' },
  'S15 a comma too many': { effect: 'bad-json', form: 'comma' },
  'S15 a text that is no JSON': { effect: 'bad-json', form: 'text' },
  'S17 nesting 100,000 deep': { effect: 'nesting' },
};
for (const [title, effect] of Object.entries(odd)) {
  entry(title, async (house) => {
    await house.fault(browse(effect));
    const page = await browseGives(house);
    assert.equal(page.rows.length, 0);
  });
}

for (const form of ['invalid', 'overlong', 'surrogate', 'escaped-surrogate', 'nul']) {
  entry(`S16 texts that are not UTF-8: ${form}`, async (house) => {
    await house.fault(browse({ effect: 'bad-utf8', form }));
    const page = await browseGives(house);
    // That it could be read as JSON is the proof; what is left holds no half characters.
    for (const row of page.rows) assert.ok(row.title.isWellFormed?.() ?? true, row.title);
  });
}

entry('S15 a play on cut JSON fails with words of its own', async (house) => {
  await house.fault({ kind: 'chunk', effect: 'bad-json' });
  await playFails(house, '');
}, { plays: true });
