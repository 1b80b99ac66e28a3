// Pages and documents that come late, broken, odd or not at all.
import assert from 'node:assert/strict';
import { State } from '../support/house.mjs';
import { browseFails, browseGives, playFails, trials, words } from './support/trial.mjs';

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

for (const effect of [{ effect: 'bad-json' }, { effect: 'body' }]) {
  entry(`S15 a play on a chunk that says nothing: ${effect.effect}`, async (house) => {
    await house.fault({ kind: 'chunk', ...effect });
    await playFails(house, 'No more chunks to play');
  }, { plays: true });
}

entry('S17 nesting 1,000,000 deep: more than is read', async (house) => {
  await house.fault(browse({ effect: 'nesting', depth: 1000000 }));
  await browseFails(house);
});

entry('S18 a key 50,000 times', async (house) => {
  await house.fault(browse({ effect: 'duplicate-keys', key: 'a', count: 50000 }));
  await browseGives(house, 3);
});

for (const text of ['1e999', '-0', '9223372036854775808', '9007199254740993', '"12"', '-1']) {
  entry(`S19 ${text} for every number`, async (house) => {
    await house.fault({ effect: 'numbers', text, kind: 'browse' }, { effect: 'numbers', text, kind: 'chunk' });
    await browseGives(house);
    const { state } = await house.now();
    assert.equal(state, State.paused);
  });
}

entry('S20 wrong types everywhere', async (house) => {
  await house.fault(browse({ effect: 'wrong-types' }));
  assert.equal((await browseGives(house)).rows.length, 0);
});

entry('S20 wrong types in what is to be played', async (house) => {
  await house.fault({ kind: 'chunk', effect: 'wrong-types' });
  await playFails(house, 'No more chunks to play');
}, { plays: true });

entry('S21 a page of very many items', async (house) => {
  await house.fault(browse({ effect: 'many-items', count: 12000 }));
  const page = await browseGives(house, 12000, 1000);
  assert.equal(page.rows.length, 50);
});

const collections = [
  'generalErrorReports', 'trackDefinitions', 'navigationNodeSummaries', 'playables',
  'trackInstances', 'navigationNodeDescriptions', 'itemDescriptions',
  'trackContainerChunkDescriptions',
];
for (const name of collections) {
  entry(`S22 without ${name}`, async (house) => {
    const start = house.log().length;
    await house.fault({ kind: 'browse', effect: 'edit', remove: [`/${name}`] },
      { kind: 'chunk', effect: 'edit', remove: [`/${name}`] });
    await browseGives(house);
    await house.play(house.album);
    if (['navigationNodeDescriptions', 'itemDescriptions', 'trackContainerChunkDescriptions'].includes(name))
      assert.match(house.log().slice(start), /Hash "\w*" doesn't contain key "/);
  }, { plays: true });
}

for (const key of ['description', 'itemLabel', 'summary', 'playable', 'image', 'result', 'items',
  'naturalTrackPointer', 'chunk', 'indexWithinChunk']) {
  entry(`S22 pages without "${key}"`, async (house) => {
    await house.fault(browse({ effect: 'edit', remove: [key] }));
    await browseGives(house);
  });
}

for (const key of ['trackInstances', 'trackDefinition', 'audio', 'uri', 'duration', 'expires', 'selfData',
  'playbackEventCollector', 'nextTrackPointer', 'lastTrackPointer', 'firstTrackPointer', 'result']) {
  entry(`S22 chunks without "${key}"`, async (house) => {
    await house.fault({ kind: 'chunk', effect: 'edit', remove: [key] });
    const answer = await house.play(house.album);
    if (answer.status !== 200) assert.notEqual(words(answer).trim(), '');
  }, { plays: true });
}

const circles = {
  'an item that is itself': {
    '/itemDescriptions/*/summary': '#page', '/navigationNodeSummaries/page': { description: '#page' },
  },
  'a page that is its own next page': { '/navigationNodeDescriptions/*/nextPage': '?' },
};
for (const [title, set] of Object.entries(circles)) {
  entry(`S23 ${title}`, async (house) => {
    await house.fault(browse({ effect: 'edit', set }));
    const since = await house.mark();
    await browseGives(house);
    assert.ok((await house.ledger('browse', since)).length <= 2, 'no page is asked for in a circle');
  });
}

entry('S24 a chunk that follows itself', async (house) => {
  const set = { '/trackContainerChunkDescriptions/chunk/nextTrackPointer': { chunk: '?', indexWithinChunk: 0 } };
  await house.fault({ kind: 'chunk', effect: 'edit', set });
  const since = await house.mark();
  assert.equal((await house.play(house.album)).status, 200);
  await house.waitForState(State.playing);
  for (let i = 0; i < 12; ++i) await house.command('next');
  await house.waitForState(State.playing);
  assert.ok((await house.ledger('chunk', since)).length <= 8, 'chunks are asked for on demand');
}, { plays: true });

// The service's own words

entry('S27 a message in place of a page', async (house) => {
  await house.fault(browse({ effect: 'conflict', terse: 'Closed', explanation: 'Until noon.' }));
  const { rows } = await browseGives(house);
  assert.equal(rows[0].title, 'Closed');
  assert.equal(rows[0].longDescription, 'Until noon.');
});

entry('S27 a message without its report', async (house) => {
  await house.fault(browse({ effect: 'conflict', report: false }));
  assert.equal((await browseGives(house)).rows[0].title, '');
});

entry('S27 a message in place of a chunk', async (house) => {
  await house.fault({ kind: 'chunk', effect: 'conflict', brief: 'No', explanation: 'Not in your region.' });
  await playFails(house, 'Not in your region.');
  const [last] = (await house.messages()).slice(-1);
  assert.ok(`${last.title} ${last.text}`.includes('Not in your region.'), JSON.stringify(last));
}, { plays: true });

for (const count of [0, 1, 10000]) {
  entry(`S28 a message with ${count} buttons`, async (house) => {
    await house.fault(browse(count
      ? { effect: 'conflict', label: 'Go', action: 'post', uri: '/selections/go', count }
      : { effect: 'conflict', options: [] }));
    await browseGives(house, 1 + count, 2000);
  });
}

for (const uri of ['selections/go', '', 'javascript:alert(1)', 'x'.repeat(2 ** 19)]) {
  for (const action of ['post', 'www']) {
    entry(`S28 a button "${action}" to "${uri.slice(0, 20)}"`, async (house) => {
      await house.fault(browse({ effect: 'conflict', label: 'Go', action, uri }));
      const page = await browseGives(house);
      const button = page.rows.find(({ title }) => title === 'Go');
      if (!button?.ref) return;
      const pressed = await house.ask('POST', 'activate', { ref: button.ref });
      assert.ok(pressed.status < 600);
      assert.equal((await house.now()).state, State.paused);
    });
  }
}

entry('S29 a refused chunk, again and again', async (house) => {
  await house.fault({ kind: 'chunk', effect: 'conflict', brief: 'No', explanation: 'Not here.' });
  for (let i = 0; i < 60; ++i) await house.play(house.album);
  const messages = await house.messages();
  assert.ok(messages.length <= 20);
  const [last] = messages.slice(-1);
  assert.ok((last.rows ?? []).length <= 100, `${last.rows?.length} rows`);
}, { plays: true });
