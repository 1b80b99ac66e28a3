// Pages and documents that come late, broken, odd or not at all.
import assert from 'node:assert/strict';
import { mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { State } from '../support/house.mjs';
import { Program } from '../support/program.mjs';
import { assertWithin, browseFails, browseGives, playFails, trials, words } from './support/trial.mjs';

const entry = trials({}, async (house) => { house.documents = await documents(); });

/** What the service answers when nothing is wrong, taken from one that asks for no login. */
async function documents() {
  const folder = mkdtempSync(join(tmpdir(), 'tavu-documents-'));
  const open = new Program(process.env.TAVU_EMULATOR,
    ['--no-login', '--state', folder, '--samples', process.env.TAVU_SAMPLES]);
  try {
    const { http } = await open.says((said) => /^\{.*"ready":.*\}$/m.test(said) && JSON.parse(said.split('\n')[0]));
    await open.says((said) => said.includes('Serving '));
    const get = async (path, kind) => ({ path, kind, json: await (await fetch(`${http}${path.slice(1)}`)).json() });
    const albums = await get('/albums/', 'browse');
    const { naturalTrackPointer } = Object.values(albums.json.playables)[0];
    const { description } = Object.values(albums.json.navigationNodeSummaries)[0];
    return [albums, await get(description, 'browse'), await get('/messages/', 'browse'),
      await get(naturalTrackPointer.chunk, 'chunk')];
  } finally {
    await open.stop();
    rmSync(folder, { recursive: true, force: true });
  }
}

/** Browses the page, or plays what the chunk is of; it may fail in words, and must be answered. */
async function see(house, path, kind) {
  const page = house.albums.replace(encodeURIComponent('/albums/'), encodeURIComponent(path));
  const answer = kind === 'chunk' ? await house.play(house.album) : await house.browse(page);
  if (answer.status !== 200) assert.notEqual(words(answer).trim(), '', JSON.stringify(answer.json));
  return answer;
}
const browse = (effect) => ({ kind: 'browse', ...effect });

// The way of an answer

const broken = {
  'S05 reset in the body': { effect: 'reset', after: 100 },
  'S06 closed before its length': { effect: 'cut', after: 100 },
  'S07 chunked without a last chunk': { effect: 'chunked-cut' },
  'S09 two lengths': { effect: 'lengths' },
  'S09 a length and chunks': { effect: 'lengths', form: 'length-and-chunked' },
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

entry('S10 a bomb of gzip is refused while it is small', async (house) => {
  await house.fault(browse({ effect: 'gzip-bomb' }));
  await browseFails(house); // what is made once is made
  const { rss } = house.player.figures();
  house.player.peak();
  await browseFails(house);
  const grown = house.player.peak() - rss;
  assert.ok(grown <= 4096, `${grown} KiB more`);
});

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

/** What has been warned of since. */
const warnings = (house, start) => house.log().slice(start).split('\n')
  .filter((line) => line.includes(' WARN ')).map((line) => line.replace(/^.*? WARN +[^:]*: /, ''));

const odd = {
  'S14 an empty body': { effect: 'body' },
  'S15 cut JSON': { effect: 'bad-json' },
  'S15 a comma too many': { effect: 'bad-json', form: 'comma' },
  'S15 a text that is no JSON': { effect: 'bad-json', form: 'text' },
  'S17 nesting 100,000 deep': { effect: 'nesting' },
};
for (const [title, effect] of Object.entries(odd)) {
  entry(`${title}: an empty page, one warning`, async (house) => {
    await house.fault(browse(effect));
    const start = house.log().length;
    const page = await browseGives(house);
    assert.equal(page.rows.length, 0);
    assert.deepEqual(warnings(house, start), ['Hash "navigationNodeDescriptions" doesn\'t contain key ""']);
  });
}

/** The very bytes of an answer, which must be texts to anybody who reads them. */
async function bytesOf(house) {
  const answer = await fetch(`${house.url}/api/v1/rows?path=${encodeURIComponent(house.albums)}&from=0&to=9`);
  return new Uint8Array(await answer.arrayBuffer());
}

for (const form of ['invalid', 'overlong', 'surrogate', 'escaped-surrogate', 'nul']) {
  entry(`S16 texts that are not UTF-8 never leave the player as such: ${form}`, async (house) => {
    await house.fault(browse({ effect: 'bad-utf8', form }));
    const text = new TextDecoder('utf-8', { fatal: true }).decode(await bytesOf(house));
    for (const { title } of JSON.parse(text).rows) assert.doesNotThrow(() => encodeURIComponent(title), title);
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

entry('S18 a key 100,000 times', async (house) => {
  await house.fault(browse({ effect: 'duplicate-keys', key: 'a', text: '0' }));
  await browseGives(house, 3);
});

entry('S18 a key 40,000 times: the last one counts, and the lists before it are not kept', async (house) => {
  await house.fault(browse({ effect: 'duplicate-keys', key: 'result', count: 40000 }));
  await browseGives(house, 3);
});

for (const text of ['1e999', '-0', '9223372036854775808', '9007199254740993', '"12"', '-1']) {
  entry(`S19 ${text} for every number`, async (house) => {
    // An index out of its chunk is another entry, and ends the player.
    await house.fault({ effect: 'numbers', text, spare: 'indexWithinChunk' });
    await browseGives(house);
    const played = await house.play(house.album);
    if (played.status === 200) await house.waitForState(State.playing);
    else assert.notEqual(words(played).trim(), '');
    const { position, duration } = await house.now();
    assert.ok(Number.isSafeInteger(position) && position >= 0, `${position}`);
    assert.ok(Number.isSafeInteger(duration) && duration >= 0, `${duration}`);
  }, { plays: true });
}

entry('S20 wrong types everywhere', async (house) => {
  await house.fault(browse({ effect: 'wrong-types' }));
  assert.equal((await browseGives(house)).rows.length, 0);
});

entry('S20 wrong types in what is to be played', async (house) => {
  await house.fault({ kind: 'chunk', effect: 'wrong-types' });
  await playFails(house, 'No more chunks to play');
}, { plays: true });

entry('S21 a page of 100,000 items: the slice that was asked for comes soon', async (house) => {
  await house.fault(browse({ effect: 'many-items', count: 100000 }));
  const { status, json, ms } = await house.browse(house.albums, 99990, 100010);
  assert.equal(status, 200, JSON.stringify(json));
  assert.equal(json.count, 100000);
  assert.equal(json.from, 99990);
  assert.equal(json.rows.length, 10);
  // Sanitizers make this one many times slower.
  assertWithin(ms, process.env.TAVU_STRICT ? 1000 : 27000);
}, { warm: true });

const collections = [
  'generalErrorReports', 'trackDefinitions', 'navigationNodeSummaries', 'playables',
  'trackInstances', 'navigationNodeDescriptions', 'itemDescriptions',
  'trackContainerChunkDescriptions',
];
for (const name of collections) {
  entry(`S22 without ${name}: what is missing is named`, async (house) => {
    await house.fault({ kind: 'browse', effect: 'edit', remove: [`/${name}`] },
      { kind: 'chunk', effect: 'edit', remove: [`/${name}`] });
    for (const { path, kind } of house.documents.filter(({ json }) => json[name])) {
      const start = house.log().length;
      await see(house, path, kind);
      // An error report is looked for where the service sends one, and here it does not.
      if (name === 'generalErrorReports') continue;
      assert.match(house.log().slice(start), new RegExp(`WARN .*Hash "${name}" doesn't contain key "`), path);
    }
  }, { plays: true });
}

/** A path for each key of each record in a document; the keys of a collection are all alike. */
function keysOf(json, path = '') {
  if (Array.isArray(json)) return json.flatMap((element) => keysOf(element, `${path}/*`));
  if (json === null || typeof json !== 'object') return [];
  const isCollection = path !== '' && !path.slice(1).includes('/');
  return Object.entries(json).flatMap(([key, value]) => {
    const here = `${path}/${isCollection ? '*' : key}`;
    return [here, ...keysOf(value, here)];
  });
}

const sorts = {
  'a page of albums': '/albums/',
  'an album\'s page': /^\/albums\/./,
  'a page of messages': '/messages/',
  'a chunk': /^\/chunks\//,
};
for (const [title, wanted] of Object.entries(sorts)) {
  entry(`S22 ${title} without each of its keys in turn`, async (house) => {
    const { path, kind, json } = house.documents.find((document) => document.path.match(wanted));
    const keys = [...new Set(keysOf(json))];
    assert.ok(keys.length >= 10, keys.join());
    for (const key of keys) {
      await house.lift();
      await house.fault({ kind, effect: 'edit', remove: [key] });
      await see(house, path, kind);
      assert.equal(house.player.findings, '', key);
    }
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
  // Its screen is fetched first.
  await house.until(async () => (await house.messages())
    .some(({ title, text }) => `${title} ${text}`.includes('Not in your region.')), 'the message');
}, { plays: true });

for (const count of [0, 1, 10000]) {
  entry(`S28 a message with ${count} buttons`, async (house) => {
    await house.fault(browse(count
      ? { effect: 'conflict', label: 'Go', action: 'post', uri: '/selections/go', count }
      : { effect: 'conflict', options: [] }));
    await browseGives(house, 1 + count, 2000);
  });
}

const uris = {
  'of the service': ['https://music.localhost/selections/go', 1],
  'relative': ['selections/go', 0],
  'empty': ['', 0],
  'a script': ['javascript:alert(1)', 0],
  'half a MiB long': ['x'.repeat(2 ** 19), 0],
};
for (const [title, [uri, posted]] of Object.entries(uris)) {
  entry(`S28 a button that posts to an address that is ${title}`, async (house) => {
    await house.fault(browse({ effect: 'conflict', label: 'Go', action: 'post', uri }));
    const { rows } = await browseGives(house);
    const since = await house.mark();
    const { ref } = rows.find((row) => row.title === 'Go');
    const pressed = await house.ask('POST', 'rows/activate', { ref });
    assert.deepEqual(pressed.json, { close: true });
    const { entries } = await house.emu('GET', `ledger?since=${since}`);
    assert.deepEqual(entries.map(({ kind }) => kind), Array(posted).fill('selection'));
  });

  entry(`S28 a link to an address that is ${title}`, async (house) => {
    await house.fault(browse({ effect: 'conflict', label: 'Go', action: 'www', uri }));
    const { rows } = await browseGives(house);
    const row = rows.find((candidate) => candidate.title === 'Go');
    assert.equal(row.link, posted ? uri : undefined);
    const pressed = await house.ask('POST', 'rows/activate', { ref: row.ref });
    assert.equal(pressed.status, 409);
    assert.ok(words(pressed).includes('"Go" is nothing that can be pressed.'), words(pressed));
  });
}

entry('S28 a button whose address alone is more than is read', async (house) => {
  await house.fault(browse({ effect: 'conflict', label: 'Go', action: 'post', uriBytes: 2 ** 20 }));
  await browseFails(house);
});

entry('S29 a refused chunk, again and again', async (house) => {
  await house.fault({ kind: 'chunk', effect: 'conflict', brief: 'No', explanation: 'Not here.' });
  for (let i = 0; i < 300; ++i) await house.play(house.album);
  const messages = await house.messages();
  assert.ok(messages.length <= 20);
  const [last] = messages.slice(-1);
  assert.ok((last.rows ?? []).length <= 100, `${last.rows?.length} rows`);
}, { plays: true });
