// Sound that does not come, does not go on, or is none.
import assert from 'node:assert/strict';
import { State } from '../support/house.mjs';
import { assertWithin, limit, trials, words } from './support/trial.mjs';

const entry = trials();
const audio = (effect) => ({ kind: 'audio', ...effect });

/** Rules for sound strike the album's first track alone: what else is fetched ahead is not meant. */
async function forFirstTrack(house, rules) {
  const { tracks } = await house.emu('GET', 'catalogue');
  const [{ id }] = tracks.filter(({ album }) => album === house.album.title)
    .sort((one, other) => one.place - other.place);
  return rules.map((rule) => (rule.kind === 'audio' ? { ...rule, path: `/audio/${id}.*` } : rule));
}

const told = async (house, after) => (await house.messages())
  .filter(({ id }) => !after.has(id)).map(({ title, text }) => `${title} ${text}`);
const known = async (house) => new Set((await house.messages()).map(({ id }) => id));

/** The first track cannot be played: people are told why, and the next one sounds. */
function skipped(title, text, within, ...rules) {
  entry(title, async (house) => {
    const before = await known(house);
    await house.fault(...await forFirstTrack(house, rules));
    const started = performance.now();
    await house.play(house.album);
    await house.until(async () => (await told(house, before)).some((line) => line.includes(text)),
      text, limit(within));
    await house.waitForState(State.playing);
    assertWithin(performance.now() - started, within);
    const { title: playing } = await house.now();
    assert.ok((await told(house, before)).every((line) => !line.includes(`"${playing}"`)), playing);
  }, { plays: true });
}

/** The track is heard in spite of the fault, and nobody is troubled. */
function heard(title, seekTo, ...rules) {
  entry(title, async (house) => {
    const before = await known(house);
    await house.fault(...await forFirstTrack(house, rules));
    assert.equal((await house.play(house.album)).status, 200);
    const { title: playing } = await house.waitForState(State.playing);
    if (seekTo) await house.command('seek', { position: seekTo });
    const reached = await house.until(async () => {
      const now = await house.now();
      return (now.position > (seekTo ?? 0) + 300 || now.title !== playing) && now;
    }, 'the sound to go on');
    assert.equal(reached.title, playing);
    assert.deepEqual(await told(house, before), []);
  }, { plays: true });
}

skipped('M01 not there', '404 Not Found', 2000, audio({ effect: 'status', status: 404, times: 1 }));
skipped('M02 gone', '410 Gone', 2000, audio({ effect: 'status', status: 410, times: 1 }));
skipped('M03 forbidden', '403 Forbidden', 2000, audio({ effect: 'status', status: 403, times: 1 }));
skipped('M04 busy', '503 Service Unavailable', 2000, audio({ effect: 'status', status: 503, times: 1 }));
skipped('M05 never answers', 'sends nothing any more', 10000, audio({ effect: 'hang' }));
skipped('M10 a web page', 'is not audio', 2000, audio({ effect: 'body', text: '<html>', type: 'text/html', times: 1 }));
skipped('M11 nothing', 'is empty', 2000, audio({ effect: 'body', type: 'audio/flac', times: 1 }));
skipped('M12 noise', 'is not audio', 2000, audio({ effect: 'body', noise: 100000, type: 'audio/flac', times: 1 }));
skipped('M13 a circle of redirects', 'redirects in a circle', 2000, audio({ effect: 'redirect', times: 6 }));
entry('M22 key headers that break the line', async (house) => {
  await house.command('stop'); // What is fetched ahead for what plays is not meant.
  await house.waitForState(State.idle);
  const before = await known(house);
  await house.fault({
    kind: 'chunk', effect: 'edit',
    set: { '/trackDefinitions/*/audio/headers': { keyHeaders: [{ name: 'x-audio-key', value: 'a\r\nb: c' }] } },
  });
  const since = await house.mark();
  await house.play(house.album);
  await house.until(async () => (await told(house, before)).some((line) => line.includes('key headers are malformed')), 'the words');
  assert.deepEqual(await house.ledger('audio', since), []);
}, { plays: true });

heard('M06 a stall in the body: it goes on elsewhere', 0, audio({ effect: 'stall', after: 60000, times: 1 }));
heard('M07 cut off before its length', 0, audio({ effect: 'cut', after: 60000, times: 1 }));
heard('M08 reset', 0, audio({ effect: 'reset', after: 60000, times: 1 }));
heard('M09 an end without a sign', 0, audio({ effect: 'chunked-cut', after: 60000, times: 1 }));
heard('M18 a seek at a server without ranges', 4000, audio({ effect: 'no-ranges' }));
for (const duration of [0, -5, 3000000]) {
  heard(`M19 a duration of ${duration}`, 0,
    { kind: 'chunk', effect: 'edit', set: { '/trackDefinitions/*/duration': duration } });
}

entry('M13 key headers do not go to another host', async (house) => {
  const before = await known(house);
  await house.fault({ kind: 'chunk', effect: 'key-headers' }, ...await forFirstTrack(house,
    [audio({ effect: 'redirect', toHost: `localhost:${house.service.httpPort}`, times: 1 })]));
  const since = await house.mark();
  await house.play(house.album);
  const foreign = await house.until(async () => (await house.ledger('audio', since))
    .find(({ host }) => host === 'localhost'), 'the request');
  assert.equal(foreign.keyHeaders, false);
  assert.equal(foreign.bearerSent, false);
  await house.until(async () => (await told(house, before)).some((line) => line.includes('403 Forbidden')), 'its refusal');
}, { plays: true });

/** What came is heard to its end; the error comes soon after. */
entry('M06 a stall that nothing ends', async (house) => {
  const before = await known(house);
  const bytes = 30000; // some four seconds of sound
  await house.fault(...await forFirstTrack(house,
    [audio({ effect: 'stall', after: bytes, times: 1 }), audio({ effect: 'hang' })]));
  await house.play(house.album);
  const { title } = await house.waitForState(State.playing);
  let last;
  let silentSince;
  await house.until(async () => {
    const now = await house.now();
    if (now.title === title) last = now.position;
    if (now.title === title && now.state === State.buffering) silentSince ??= performance.now();
    return (await told(house, before)).some((line) => line.includes('sends nothing any more'));
  }, 'the words', limit(30000));
  if (silentSince) assertWithin(performance.now() - silentSince, 10000);
  assert.ok(last > 2500, `${last} ms were heard`);
  await house.waitForState(State.playing);
  assert.notEqual((await house.now()).title, title);
}, { plays: true });

entry('M14 half as fast as it plays: an underrun is told once a gap, and nothing is skipped', async (house) => {
  const before = await known(house);
  await house.fault(audio({ effect: 'trickle', bytesPerSecond: 4100 }));
  const since = await house.mark();
  await house.play(house.album);
  const { title } = await house.waitForState(State.playing);
  await house.until(async () => (await house.gapReports(since)).length >= 4, 'two gaps', 60000);
  const { title: still, position } = await house.now();
  assert.equal(still, title);
  assert.ok(position > 0, `${position}`);
  const reports = await house.gapReports(since);
  reports.forEach((report, index) => assert.equal(report, `${index % 2 ? 'START' : 'STOP'} BUFFER_UNDERFLOW`));
  await house.until(async () => (await house.now()).state === State.buffering, 'buffering');
  await house.until(async () => (await house.now()).bufferLevel < 100, 'the level');
  assert.deepEqual(await told(house, before), []);
  assert.equal((await house.command('stop')).status, 200);
}, { plays: true });

entry('M15 an address that has expired before it plays', async (house) => {
  await house.fault({ kind: 'chunk', effect: 'expire', in: -1000 });
  const answer = await house.play(house.album);
  assert.ok(JSON.stringify(answer.json).includes('Error: Track already expired'), JSON.stringify(answer.json));
}, { plays: true });

entry('M20 no track can be played: one round of them, then it ends', async (house) => {
  await house.fault(audio({ effect: 'status', status: 404 }));
  const since = await house.mark();
  await house.play(house.album);
  await house.until(async () => (await house.ledger('audio', since)).length > 0, 'a try');
  await house.waitForState(State.idle);
  const tried = (await house.ledger('audio', since)).map(({ path }) => path);
  // One that fails while it is prepared is asked for again in its turn; a second round asks for all.
  assert.ok(tried.length < 2 * new Set(tried).size, tried.join('\n'));
  assert.ok((await house.now()).error, 'the error stays in sight');
}, { plays: true });

entry('M17 the address expires while it plays: it is renewed once, and the track goes on', async (house) => {
  const before = await known(house);
  await house.fault({ kind: 'chunk', effect: 'expire', in: 2500 }, ...await forFirstTrack(house,
    [audio({ effect: 'cut', after: 60000, bytesPerSecond: 20000, times: 1 })]));
  const since = await house.mark();
  assert.equal((await house.play(house.album)).status, 200);
  const { title } = await house.waitForState(State.playing);
  const renewals = async () => (await house.ledger('instance', since)).filter((sent) => sent.track === title);
  await house.until(async () => (await renewals()).length >= 1, 'the renewal');
  await house.until(async () => (await house.now()).position > 8000, 'what came by the new address');
  assert.equal((await house.now()).title, title);
  assert.equal((await renewals()).length, 1);
  const sent = (await house.ledger('audio', since)).filter(({ track }) => track === title);
  const [renewal] = await renewals();
  assert.ok(sent.some(({ status }) => status === 403), 'it was refused');
  assert.ok(sent.every(({ status, serial }) => status !== 403 || serial < renewal.serial), 'and not after that');
  assert.ok((await told(house, before)).every((line) => !line.includes(title)), 'and nobody is troubled');
}, { plays: true });

entry('M18 a seek behind the end is refused, and one while it buffers is followed', async (house) => {
  await house.fault(audio({ effect: 'trickle', bytesPerSecond: 4100 }));
  await house.play(house.album);
  const { title, duration } = await house.waitForState(State.playing);
  const refused = await house.command('seek', { position: duration + 1000 });
  assert.ok(words(refused).includes('The position must lie within the track.'), words(refused));
  await house.until(async () => (await house.now()).state === State.buffering, 'buffering');
  assert.equal((await house.command('seek', { position: 1000 })).status, 200);
  await house.lift();
  await house.until(async () => {
    const now = await house.now();
    return now.state === State.playing && now.position >= 1000 && now.position < 4000;
  }, 'the place', 60000);
  assert.equal((await house.now()).title, title);
}, { plays: true });

entry('M21 what is prepared expires before its turn, and sounds all the same', async (house) => {
  const expiryMs = 4000;
  await house.fault({ kind: 'chunk', effect: 'expire', in: expiryMs });
  const since = await house.mark();
  await house.play(house.album);
  const expired = Date.now() + expiryMs;
  const { title } = await house.waitForState(State.playing);
  await house.until(async () => (await house.ledger('audio', since)).some(({ track }) => track !== title), 'the next one');
  const { title: next } = await house.until(async () => {
    const now = await house.now();
    return now.title !== title && now.state === State.playing && now.position > 1000 && now;
  }, 'the next track', 60000);
  assert.ok(Date.now() > expired);
  assert.equal(next, 'Sleeper Car');
}, { plays: true });

entry('M21 what is prepared is not what the mode wants by now', async (house) => {
  const since = await house.mark();
  await house.play(house.album);
  const { title, duration } = await house.waitForState(State.playing);
  await house.until(async () => (await house.ledger('audio', since)).some(({ track }) => track !== title), 'the next one');
  await house.told('POST', 'player/mode', { mode: 2 });
  await house.command('seek', { position: duration - 700 });
  await house.until(async () => (await house.reports(since)).includes('STOP TRACK_END'), 'its end');
  await house.until(async () => (await house.now()).state === State.playing, 'the sound');
  assert.equal((await house.now()).title, title);
  await house.told('POST', 'player/mode', { mode: 4 });
}, { plays: true });

entry('M23 one track, over and over', async (house) => {
  await house.told('POST', 'player/mode', { mode: 2 });
  await house.play(house.album);
  const { title, duration } = await house.waitForState(State.playing);
  for (let round = 0; round < 5; ++round) {
    await house.command('seek', { position: duration - 300 });
    await house.until(async () => {
      const now = await house.now();
      return now.title === title && now.state === State.playing && now.position < duration - 1000;
    }, 'its beginning');
  }
  await house.told('POST', 'player/mode', { mode: 4 });
}, { plays: true });
