// What the player keeps over its end, with the real program and its hardest end.
import assert from 'node:assert/strict';
import { readFileSync, statSync, writeFileSync, existsSync } from 'node:fs';
import { join } from 'node:path';
import { after, before, test } from 'node:test';
import { House, State } from '../support/house.mjs';

let house;
const file = () => join(house.folder, 'player', 'state.json');
const written = () => JSON.parse(readFileSync(file(), 'utf8'));

before(async () => { house = await House.open(); });
after(() => house?.close());

async function killAndStart(settings) {
  assert.equal(house.player.findings, '');
  await house.player.kill();
  await house.startPlayer(settings);
}

test('a pause survives kill -9: track, position, mode, volume', async () => {
  assert.equal((await house.play(await house.row('Albums', 'Night Trains'))).status, 200);
  await house.waitForState(State.playing);
  await house.command('next');
  const second = await house.until(async () => {
    const player = await house.now();
    return player.state === State.playing && player.title === 'Sleeper Car' && player;
  }, 'the second track');
  await house.command('seek', { position: 4000 });
  await house.command('mode', { mode: 4 });
  await house.command('volume', { volume: 33, mute: true });
  await house.command('pause');
  await house.waitForState(State.paused);
  // All of it: the position alone may stand in the file since the seek. Where it was paused exactly is
  // told a moment after the pause.
  const paused = await house.until(async () => {
    const now = await house.now();
    if (!existsSync(file())) return null;
    const { position, volume, muted, playMode } = written();
    return position === now.position && volume === 33 && muted && playMode === 4 && now;
  }, 'the file');

  await killAndStart();
  const back = await house.now();
  assert.equal(back.state, State.paused);
  for (const name of ['title', 'artist', 'album', 'duration']) assert.equal(back[name], second[name]);
  assert.equal(back.position, paused.position);
  await house.until(async () => (await house.now()).mode === 4, 'the mode');
  assert.equal(back.volume, 33);
  assert.equal(back.mute, true);
});

test('what is kept is no address, and for the owner alone', () => {
  const text = readFileSync(file(), 'utf8');
  assert.ok(!/:\/\/|%3a%2f%2f/i.test(text), text);
  assert.ok(!text.includes('signature'), text);
  assert.equal(statSync(file()).mode & 0o077, 0);
});

test('it goes on where it was when it is asked to', async () => {
  await house.signedIn();
  const { position } = await house.now();
  const asked = performance.now();
  assert.equal((await house.command('resume')).status, 200);
  const playing = await house.waitForState(State.playing);
  assert.equal(playing.title, 'Sleeper Car');
  const later = await house.until(async () => {
    const now = await house.now();
    return now.position > position && now;
  }, 'the sound to go on');
  const took = performance.now() - asked;
  assert.ok(later.position < position + 3000 + took, `${position} -> ${later.position}`);
});

test('its album goes on behind it', async () => {
  await house.command('seek', { position: (await house.now()).duration - 1500 });
  await house.until(async () => (await house.now()).title === 'Border at Three', 'the next track');
  await house.play(await house.row('Albums', 'Night Trains', 'Sleeper Car'));
  await house.until(async () => {
    const { state, title } = await house.now();
    return state === State.playing && title === 'Sleeper Car';
  }, 'the track again');
  await house.told('POST', 'player/mode', { mode: 2 }); // The same one from here on.
  await house.until(() => written().playMode === 2 && written().track.title === 'Sleeper Car', 'the file');
});

test('its picture is back with the login, though no address of it was kept', async () => {
  const { title, artwork } = await house.now();
  await killAndStart();
  const back = await house.until(async () => {
    const now = await house.now();
    return now.artwork && now;
  }, 'the picture');
  assert.equal(back.title, title);
  assert.equal(back.artwork, artwork);
  const picture = await fetch(house.url + back.artwork);
  assert.match(picture.headers.get('content-type'), /^image\//);
  await picture.arrayBuffer();
  await house.signedIn();
  await house.command('resume');
  await house.waitForState(State.playing);
});

test('a kill while it plays loses ten seconds at most', async () => {
  const { title, position, duration } = await house.now();
  const looked = performance.now();
  await killAndStart();
  const back = await house.now();
  assert.equal(back.title, title);
  const latest = position + performance.now() - looked; // It may have begun again meanwhile.
  const lost = (latest - back.position + duration) % duration;
  assert.ok(lost <= 10000 + latest - position, `${position} of ${duration} -> ${back.position}`);
  assert.equal(back.state, State.paused);
});

test('told to, it goes on by itself', async () => {
  await house.signedIn();
  await house.command('resume');
  await house.waitForState(State.playing);
  await house.until(() => written().playing, 'the file');
  await killAndStart({ 'player.resume': 'true' });
  assert.equal((await house.waitForState(State.playing)).title, 'Sleeper Car');
});

test('a damaged state starts afresh, says so once, and is set aside', async () => {
  await house.signedIn();
  await house.player.kill();
  writeFileSync(file(), '{"version":1,"volu');
  await house.startPlayer();
  const told = (await house.messages()).filter(({ title }) => title.includes('afresh'));
  assert.equal(told.length, 1);
  assert.ok(told[0].text.includes(`${file()}.bad`), told[0].text);
  assert.equal(readFileSync(`${file()}.bad`, 'utf8'), '{"version":1,"volu');
  assert.equal((await house.now()).state, State.idle);
  await house.signedIn();
  assert.equal(house.player.findings, '');
});

test('no kill at any moment leaves half a state', async () => {
  for (let round = 0; round < 15; ++round) {
    for (let step = 0; step < 8; ++step) await house.command('volume', { volume: 10 + round + step });
    const delay = performance.now() + round * 17;
    while (performance.now() < delay) await house.command('volume', { volume: round });
    await killAndStart();
    const fresh = (await house.messages()).filter(({ title }) => title.includes('afresh'));
    assert.deepEqual(fresh, []);
  }
  // A kill amid a renewal leaves a token that the service still takes.
  await house.signedIn();
});
