// The real player as a desktop sees it: on a session bus of the test's own (see CMakeLists.txt), by
// the tool that desktops use.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { after, before, it } from 'node:test';

import { sampleTrails, startPrograms } from './support/programs.mjs';
import { eventually } from './support/waiting.mjs';

let programs;
before(async () => {
  const settings = { 'player.mpris': 'true', 'player.mpris-bus': 'session' };
  programs = await startPrograms({ autoApprove: true, settings });
});
after(() => programs?.close());

const playerctl = (...words) =>
  execFileSync('playerctl', ['--player=tavu', ...words], { encoding: 'utf8' }).trim();

/** What it says to something that the player may have to be ready for: null until it is. */
const tried = (...words) => {
  try {
    return playerctl(...words);
  } catch {
    return null;
  }
};
const says = (what, ...words) =>
  eventually(`${words.join(' ')} is ${what}`, () => tried(...words) === what);
const takes = (...words) =>
  eventually(`${words.join(' ')} is taken`, () => tried(...words) !== null);

const api = async (method, path, body) => {
  const headers = { 'content-type': 'application/json' };
  const answer = await fetch(`${programs.url}/api/v1${path}`, {
    method,
    headers,
    body: body && JSON.stringify(body),
  });
  return answer.json();
};

async function playAlbum() {
  await api('POST', '/login/start', {});
  const signedIn = async () => (await api('GET', '/login')).state === 'loggedIn';
  await eventually('somebody is signed in', signedIn);
  let row = { path: '' };
  for (const title of sampleTrails.album) {
    const named = async () => {
      const { rows } = await api('GET', `/rows?path=${encodeURIComponent(row.path)}`);
      return rows?.find((each) => each.title.startsWith(title));
    };
    await eventually(title, named);
    row = await named();
  }
  await api('POST', '/play', { ref: row.ref });
}

it('is there before anything plays', () => says('Stopped', 'status'));

it('shows what plays, and takes every command', async () => {
  await playAlbum();
  await says('Playing', 'status');
  await takes('pause'); // not before the sound has come
  await says('Paused', 'status');
  await says('Mira Solstice', 'metadata', 'xesam:artist');
  const title = playerctl('metadata', 'xesam:title');
  assert.notEqual(title, '');
  assert.match(playerctl('metadata', 'mpris:artUrl'), /^http:/);
  await takes('position', '5');
  await says('5.000000', 'position');
  await takes('next');
  const other = () => ![null, '', title].includes(tried('metadata', 'xesam:title'));
  await eventually('another track plays', other);
  playerctl('loop', 'Track');
  await says('Track', 'loop');
  playerctl('shuffle', 'On');
  await says('On', 'shuffle');
  assert.equal((await api('GET', '/state')).player.mode, 3);
  playerctl('volume', '0.4');
  await says('0.400000', 'volume');
  assert.equal((await api('GET', '/state')).player.volume, 40);
});

it('shows the rating of what plays, and stops', async () => {
  const ratable = async () => (await api('GET', '/state')).player.controls.like;
  await eventually('it can be rated', ratable);
  await api('POST', '/player/like', {});
  await says('1.0', 'metadata', '--format', '{{xesam:userRating}}');
  await takes('stop');
  await says('Stopped', 'status');
});
