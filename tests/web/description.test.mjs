// The description of the control API against the real player: every operation is called, and every
// answer and event has to be what the description says.
import assert from 'node:assert/strict';
import { after, before, it } from 'node:test';

import { Description } from './support/description.mjs';
import { sampleTrails, startPrograms } from './support/programs.mjs';
import { eventually, readEvents } from './support/waiting.mjs';

const base = '/api/v1';
let programs;
let description;

before(async () => {
  programs = await startPrograms({ autoApprove: true });
  const response = await fetch(`${programs.url}${base}/openapi.json`);
  description = new Description(await response.json());
});
after(() => programs?.close());

async function call(method, path, body, type = 'application/json') {
  const response = await fetch(programs.url + base + path, {
    method,
    headers: body === undefined ? {} : { 'content-type': type },
    body: body === undefined ? undefined : JSON.stringify(body),
  });
  const [pathname] = (base + path).split('?');
  return { status: response.status, body: await description.answer(method, pathname, response) };
}

const get = (path) => call('GET', path);
const post = (path, body = {}) => call('POST', path, body);

const rowsOf = async (path = '') => {
  const { body } = await get(`/rows${path && `?path=${encodeURIComponent(path)}`}`);
  return body.rows;
};

/** The row at the end of a trail of titles. */
async function walk(trail) {
  let row = { path: '' };
  for (const title of trail) {
    const rows = await rowsOf(row.path);
    row = rows.find((each) => each.title.startsWith(title));
    assert.ok(row, `no row ${title}`);
  }
  return row;
}

const playing = () =>
  eventually('music plays', async () => (await get('/state')).body.player.state === 2);

it('tells of logging in', async () => {
  assert.equal((await get('/login/qr.svg')).status, 404);
  await rowsOf();
  await post('/login/start');
  await eventually('the user is logged in', async () => {
    await get('/login/qr.svg');
    return (await get('/login')).body.state === 'loggedIn';
  });
  await eventually('the service shows its root', async () =>
    (await rowsOf()).some((row) => row.title === 'Albums'),
  );
});

it('tells of browsing and searching, refusals included', async () => {
  const album = await walk(sampleTrails.album);
  assert.equal(album.playable, true);
  assert.equal((await get(album.icon.replace(base, ''))).status, 200);
  await rowsOf((await walk(sampleTrails.error)).path);
  const { body } = await post('/search', { text: sampleTrails.search });
  assert.ok((await rowsOf(body.path)).length > 0);
  const [, button] = await rowsOf((await walk(sampleTrails.ask)).path);
  assert.equal((await post('/rows/activate', { ref: button.ref })).status, 200);
  for (const [path, wrong] of [
    ['/search', { text: '' }],
    ['/rows/activate', {}],
    ['/play', {}],
    ['/player/seek', { position: -1 }],
    ['/player/mode', { mode: 6 }],
    ['/player/volume', {}],
    ['/player/sleep', { minutes: -1 }],
    ['/outputs', {}],
  ])
    assert.equal((await post(path, wrong)).status, 400, path);
  assert.equal((await get('/rows?from=2&to=1')).status, 400);
  assert.equal((await get('/artwork/none')).status, 404);
  assert.equal((await post('/play', { ref: 'gone' })).status, 404);
  assert.equal((await post('/rows/activate', { ref: 'gone' })).status, 404);
  assert.equal((await post('/outputs', { id: 'gone' })).status, 404);
  assert.equal((await call('POST', '/player/next', {}, 'text/plain')).status, 415);
});

it('tells of playing', async () => {
  const album = await walk(sampleTrails.album);
  assert.equal((await post('/play', { ref: album.ref })).status, 200);
  await playing();
  for (const command of ['like', 'dislike', 'pause', 'resume', 'next', 'previous'])
    assert.equal((await post(`/player/${command}`)).status, 200, command);
  await playing();
  await eventually('the queue tells what plays and where it is from', async () => {
    const { current, from } = (await get('/queue')).body;
    return current?.ref && from?.title === album.title;
  });
  await eventually('the sound is known', async () => {
    const { audio } = (await get('/state')).body.player;
    return audio.codec && audio.sampleRate > 0 && audio.output.name;
  });
  await post('/player/seek', { position: 1000 });
  await post('/player/mode', { mode: 4 });
  await post('/player/volume', { volume: 40, mute: false });
  await post('/player/sleep', { minutes: 30, finishTrack: true });
  const { outputs } = (await get('/outputs')).body;
  await post('/outputs', { id: outputs[0].id });
  const { player } = (await get('/state')).body;
  assert.equal(player.mode, 4);
  assert.equal(player.volume, 40);
  assert.equal(player.sleep.finishTrack, true);
  await post('/player/stop');
  assert.equal((await get('/openapi.json')).body.openapi, '3.1.0');
});

it('tells of failures, with the screens that they lead to', async () => {
  const refused = await walk(['Messages', 'Is refused when it starts']);
  const { status, body } = await post('/play', { ref: refused.ref });
  assert.equal(status, 409);
  assert.ok(body.actionReply.result.path);
  await eventually('the messages tell of it', async () =>
    (await get('/messages')).body.messages.some(
      ({ kind, rows }) => kind === 'error' && rows?.length > 1,
    ),
  );
});

it('tells of each event', async () => {
  const schemas = { snapshot: 'Snapshot', login: 'Login', player: 'Player', message: 'Message' };
  const seen = new Set();
  const ended = readEvents(`${programs.url}${base}/events`, (name, data) => {
    if (schemas[name]) description.record(schemas[name], data, `event ${name}`);
    else assert.match(name, /^(position|queue|rows)$/);
    seen.add(name);
    return ['snapshot', 'player', 'position', 'queue', 'message', 'login'].every((each) =>
      seen.has(each),
    );
  });
  description.told.add('getEvents');
  await eventually('the stream has begun', () => seen.has('snapshot'));
  const album = await walk(sampleTrails.album);
  await post('/play', { ref: album.ref });
  await playing();
  await post('/player/like');
  await eventually('it has a position', async () => seen.has('position'));
  await post('/logout');
  await ended;
});

it('describes nothing that was not called', () => {
  assert.deepEqual(description.untold(), []);
});
