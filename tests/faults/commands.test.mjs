// Commands faster than they can be followed, and at the worst of moments.
import assert from 'node:assert/strict';
import { State } from '../support/house.mjs';
import { moment } from '../support/program.mjs';
import { limit, trials, words } from './support/trial.mjs';

const entry = trials();
const delivered = 10000;

const other = (house) => house.row('Albums', 'Small Rooms');

/** Reports as the service got them: with their track, in order. */
async function reports(house, since) {
  return (await house.playReports(since))
    .map(({ track, report }) => ({ track, event: report.event, reason: report.reason }));
}

/** What is told last is the start of the track and, on its own, its end. */
function assertEnded(list, title) {
  const near = JSON.stringify(list.slice(-6));
  assert.equal(list.filter(({ event }) => event === 'START').at(-1)?.track, title, near);
  assert.equal(list.at(-1).event, 'STOP', near);
  assert.equal(list.at(-1).track, title, near);
}

/** Each track has ended as often as it began. Two reports that leave at once may change places. */
function assertPaired(list) {
  const balance = {};
  for (const { event, track } of list) balance[track] = (balance[track] ?? 0) + (event === 'START' ? 1 : -1);
  for (const [track, open] of Object.entries(balance)) assert.equal(open, 0, `${track}: ${JSON.stringify(list)}`);
}

/** When all is told, one track sounds; it is paused, and that is told, too. */
async function pausesWell(house, since) {
  await settled(house, since);
  await soundsOn(house);
  await house.command('pause');
  const { title } = await house.waitForState(State.paused);
  const told = await settled(house, since);
  assertEnded(told, title);
  return told;
}

/** One track sounds, and it goes on. */
async function soundsOn(house) {
  const { title, position } = await house.waitForState(State.playing);
  await house.until(async () => {
    const now = await house.now();
    return now.title === title ? now.position > position + 200 : now.state === State.playing;
  }, 'the sound to go on');
}

async function settled(house, since) {
  let last = -1;
  await house.until(async () => {
    const { length } = await house.ledger('report', since);
    const same = length === last;
    last = length;
    if (!same) await moment(300);
    return same;
  }, 'the last report');
  return reports(house, since);
}

async function playFresh(house, row = house.album) {
  await house.command('stop');
  await house.waitForState(State.idle);
  const since = await house.mark();
  assert.equal((await house.play(row)).status, 200);
  await house.waitForState(State.playing);
  return since;
}

/** So many commands a second; nobody waits for an answer before the next one. */
async function mash(house, name, perSecond, seconds, command = () => house.command(name)) {
  const answers = [];
  const started = performance.now();
  for (let i = 0; i < perSecond * seconds; ++i) {
    await house.until(() => performance.now() - started >= (i * 1000) / perSecond, 'its turn');
    answers.push(command());
  }
  return answers;
}

for (const [title, name, seconds] of [['K01', 'next', 10], ['K02', 'previous', 3]]) {
  entry(`${title} "${name}" a hundred times a second`, async (house) => {
    const since = await playFresh(house);
    for (const { status } of await Promise.all(await mash(house, name, 100, seconds)))
      assert.ok([200, 409].includes(status), `${status}`);
    await pausesWell(house, since);
  }, { plays: true });
}

entry('K03 pause and go on, a hundred times a second', async (house) => {
  const since = await playFresh(house);
  // A wish to go on that finds things changed is answered by the player's deadline, much later; who
  // sent it does not wait.
  const gone = new AbortController();
  const press = () => fetch(`${house.url}/api/v1/player/pause`,
    { method: 'POST', headers: { 'content-type': 'application/json' }, body: '{}', signal: gone.signal });
  for (const answer of await mash(house, 'pause', 100, 3, press)) answer.catch(() => {});
  const arrived = performance.now() + 1000;
  await house.until(() => performance.now() > arrived, 'the last of them');
  for (let turn = 0; turn < 2; ++turn) await house.now(); // It has read what came before.
  gone.abort();
  await house.until(async () => (await house.now()).state !== State.buffering, 'calm');
  const { title } = await house.now();
  await house.command('resume');
  await soundsOn(house);
  assert.equal((await house.now()).title, title);
  await pausesWell(house, since);
}, { plays: true });

/** Plays, and stops before the first request of the kind is answered. Tells since when. */
async function stopDuring(house, kind) {
  const delay = 1500;
  const most = 10;
  for (let round = 0; round < most; ++round) {
    await house.command('stop');
    await house.waitForState(State.idle);
    await settled(house, 0);
    await house.fault({ kind, delay, times: 1 });
    const since = await house.mark();
    const played = house.play(house.album);
    const first = async () => (await house.ledger(kind, since))[0];
    const { at } = await house.until(first, 'the moment');
    assert.equal((await house.command('stop')).status, 200);
    const isInTime = Date.now() - Date.parse(at) < delay;
    await played;
    await house.until(async () => (await first()).status === 200, 'the late answer');
    if (isInTime) return since;
  }
  return assert.fail('a stop before the answer');
}

const moments = { 'the first fetch': 'chunk', 'the report': 'report' };
for (const [title, kind] of Object.entries(moments)) {
  entry(`K05 stop during ${title}`, async (house) => {
    const since = await stopDuring(house, kind);
    await moment(300);
    assert.equal((await house.now()).state, State.idle);
    assert.deepEqual(await house.ledger('audio', since), [], 'nothing is fetched to sound');
  }, { plays: true });
}

entry('K05 stop while the next track is prepared', async (house) => {
  await house.fault({ kind: 'audio', skip: 1, effect: 'hang' });
  const since = await playFresh(house);
  await house.until(async () => (await house.ledger('audio', since)).length >= 2, 'the next track');
  assert.equal((await house.command('stop')).status, 200);
  await house.waitForState(State.idle);
  assert.deepEqual((await settled(house, since)).map(({ event, reason }) => `${event} ${reason}`),
    ['START CONTAINER_SELECTED', 'STOP STOP']);
}, { plays: true });

entry('K06 signed out during a fetch: what waits is told so, and playback stops once', async (house) => {
  const since = await playFresh(house);
  await house.fault({ kind: 'browse', delay: 10000 }, { kind: 'chunk', delay: 10000 });
  const late = [house.play(house.album), house.browse(house.albums)];
  await house.until(async () => (await house.ledger('browse', since)).length > 0, 'the fetch');
  await house.told('POST', 'logout');
  await house.until(async () => await house.login() === 'loggedOut', 'the end of the login');
  await house.waitForState(State.idle);
  const stops = (await settled(house, since)).filter(({ event }) => event === 'STOP');
  assert.equal(stops.length, 1);
  const screen = await house.browse('');
  assert.equal(screen.status, 200, 'the login screen');
  for (const answer of await Promise.all(late)) if (answer.status !== 200) assert.notEqual(words(answer).trim(), '');
  assert.equal((await house.now()).state, State.idle, 'nothing begins late');
}, { login: 'any', plays: true });

entry('K08 one play right after another: the first never sounds, however late it comes', async (house) => {
  const second = await other(house);
  const delay = 400;
  await house.fault({ kind: 'chunk', path: `/chunks/albums/${await idOf(house, house.album)}`, delay });
  const titles = new Set((await house.emu('GET', 'catalogue')).tracks
    .filter(({ album }) => album === second.title).map(({ title }) => title));
  const wanted = 10;
  for (let round = 0, overtaken = 0; overtaken < wanted; ++round) {
    assert.ok(round < 10 * wanted, 'a second play before the first is answered');
    const since = await house.mark();
    const first = house.play(house.album);
    await house.until(async () => (await house.ledger('chunk', since)).length === 1, 'the first');
    const answer = await house.play(second);
    assert.equal(answer.status, 200);
    await first;
    const chunks = () => house.ledger('chunk', since);
    await house.until(async () => (await chunks()).every(({ status }) => status === 200),
      'the late answer', limit(delivered));
    const { title } = await house.waitForState(State.playing);
    const [one, two] = (await chunks()).map(({ at }) => Date.parse(at));
    if (two - one >= delay) continue; // Too late itself: the first was answered and may have sounded.
    ++overtaken;
    assert.ok(titles.has(title), title);
    const starts = (await reports(house, since)).filter(({ event }) => event === 'START');
    assert.ok(starts.every(({ track }) => titles.has(track)), JSON.stringify(starts));
  }
}, { plays: true });

async function idOf(house, row) {
  const { tracks } = await house.emu('GET', 'catalogue');
  return tracks.find(({ album }) => album === row.title).albumId;
}

entry('K11 "next" twice at the end of a chunk', async (house) => {
  await house.told('POST', 'player/mode', { mode: 0 });
  const since = await playFresh(house, await house.row('Stations', ''));
  const tracksOfAChunk = 10;
  for (let place = 1; place < tracksOfAChunk; ++place) {
    const { title } = await house.now();
    await house.command('next');
    await house.until(async () => {
      const now = await house.now();
      return now.title !== title && now.state === State.playing;
    }, 'the next track');
  }
  await house.waitForState(State.playing);
  await Promise.all([house.command('next'), house.command('next')]);
  await soundsOn(house);
  const chunks = (await house.ledger('chunk', since)).length;
  assert.ok(chunks >= 2 && chunks <= 3, `${chunks} chunks`);
  assertPaired(await pausesWell(house, since));
  await house.told('POST', 'player/mode', { mode: 4 });
}, { plays: true });

const names = ['next', 'previous', 'pause', 'resume', 'stop', 'like', 'dislike'];
entry('K12 commands after the end', async (house) => {
  await house.command('stop');
  await house.waitForState(State.idle);
  for (let mode = 0; mode <= 5; ++mode) {
    await house.told('POST', 'player/mode', { mode });
    for (const name of names) {
      const answer = await house.command(name);
      if (answer.status !== 200) assert.notEqual(words(answer).trim(), '', name);
    }
    const sought = await house.command('seek', { position: 0 });
    if (sought.status !== 200) assert.notEqual(words(sought).trim(), '');
    assert.equal((await house.now()).state, State.idle);
  }
  await house.told('POST', 'player/mode', { mode: 4 });
}, { plays: true });

entry('K13 "next" at the very end of a track', async (house) => {
  const since = await playFresh(house);
  const rounds = 8;
  for (let round = 0; round < rounds; ++round) {
    const { duration } = await house.waitForState(State.playing);
    await house.command('seek', { position: duration - 400 });
    const until = performance.now() + 300 + round * 30;
    await house.until(() => performance.now() > until, 'the end');
    await house.command('next');
    await soundsOn(house);
  }
  assertPaired(await pausesWell(house, since));
}, { plays: true });

entry('K16 the player ends with 500 requests, a play and ratings under way', async (house) => {
  await playFresh(house);
  await house.command('like');
  await house.fault({ kind: 'browse', effect: 'hang' }, { kind: 'chunk', effect: 'hang' }, { kind: 'rating', effect: 'hang' });
  const since = await house.mark();
  const many = Array.from({ length: 500 }, () => house.browse(house.albums).catch(() => undefined));
  many.push(house.play(house.album).catch(() => undefined), house.command('dislike').catch(() => undefined));
  await house.until(async () => (await house.ledger('browse', since)).length > 0, 'the requests');
  const started = performance.now();
  await house.player.stop();
  assert.ok(performance.now() - started < limit(5000));
  await Promise.all(many);
  assert.deepEqual(house.player.exit, { code: 0, signal: null });
  assert.equal(house.player.findings, '');
  await house.lift();
  await house.startPlayer();
  await house.signedIn();
}, { process: 'new', plays: true });
