// One evening with the real programs, recorded: a listener signs in, plays an album, leaves it paused
// until the address of the stream has run out, goes on, rates, skips, meets a refusal and stops. The
// sound, the service's ledger and the pictures are kept in the build's folder "recording".
import assert from 'node:assert/strict';
import { mkdirSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { after, before, it } from 'node:test';

import { rate, readErrorScreen, signIn, stop } from './scenario.mjs';
import { assertNoFaults, launch, openPage, widths } from './support/browser.mjs';
import { named, Person, picture } from './support/person.mjs';
import { sampleTrails, startPrograms } from './support/programs.mjs';
import { bytesOf, commonStart, decoded, Ear, msOf, placeOf } from './support/sound.mjs';
import { eventually } from './support/waiting.mjs';

const album = 'Harbour at First Light';
const expiresAfterMs = 3000;
const firstChunkExpiresEarly = `kind=chunk times=1 effect=expire in=${expiresAfterMs}`;
const folder = process.env.TAVU_WEB_SHOTS;

const scene = { name: 'desktop', trails: sampleTrails };
let browser;
let ear;
let programs;
let soundBeforePause;

before(async () => {
  mkdirSync(folder, { recursive: true });
  ear = await Ear.open();
  programs = await startPrograms({
    emulator: ['--unrated-every', '0', '--fault', firstChunkExpiresEarly],
    settings: { 'player.output': ear.output },
  });
  browser = await launch();
  scene.page = await openPage(browser, programs.url, { viewport: widths.desktop });
  scene.person = new Person(scene.page, { wide: true });
});
after(async () => {
  await browser?.close();
  await programs?.close();
  ear?.close();
});

const told = async (path) => (await fetch(programs.control + path)).json();
const ledger = async (kind) => (await told(`ledger?kind=${kind}&limit=1000`)).entries;
/** Without those of gaps, which a busy machine makes. */
const playReports = async () => (await ledger('report'))
  .map(({ report }) => `${report.event} ${report.reason}`)
  .filter((report) => !report.endsWith('BUFFER_UNDERFLOW'));

async function playingPast(ms) {
  const { person } = scene;
  await person.waitFor(async () => (await person.position()) > ms);
}

it('signs in', () => signIn(scene));

async function playAlbum() {
  await scene.person.walk(['Albums']);
  await (await scene.person.find(named('Play', album))).click();
}

it('plays an album', async () => {
  await playAlbum();
  await playingPast(3000);
  await picture(scene.page, 'desktop-playing');
});

it('goes on after a pause that has outlived the address of the stream', async () => {
  const { page, person } = scene;
  await person.now.getByRole('button', { name: 'Pause' }).click();
  await person.now.getByRole('button', { name: 'Play', exact: true }).waitFor();
  const held = await person.position();
  const sound = await ledger('audio');
  const gone = Date.parse(sound.at(-1).at) + expiresAfterMs + 1000;
  await person.waitFor(() => Date.now() > gone);
  soundBeforePause = ear.heard().length;
  await person.now.getByRole('button', { name: 'Play', exact: true }).click();
  await playingPast(held + 1500);
  assert.ok((await ledger('audio')).length > sound.length, 'the stream was asked for anew');
  await picture(page, 'desktop-resumed');
});

// Before the first track has ended, which lasts eleven seconds.
it('plays it again', async () => {
  const reports = (await playReports()).length;
  await playAlbum();
  await scene.person.waitFor(async () => (await playReports()).length > reports);
});

it('rates it', () => rate(scene));

it('skips to its second track', async () => {
  const { person } = scene;
  const first = await person.nowTitle();
  await person.now.getByRole('button', { name: 'Next track' }).click();
  await person.waitFor(async () => (await person.nowTitle()) !== first);
  await playingPast(2000);
});

it('reads a refusal on a phone, and stops', async () => {
  Object.assign(scene, { name: 'phone', person: new Person(scene.page, { wide: false }) });
  await scene.page.setViewportSize(widths.phone);
  await readErrorScreen(scene);
  await scene.person.goTo('Now playing');
  await picture(scene.page, 'phone-now');
  await stop(scene);
  assertNoFaults(scene.page);
});

it('has told the service all of it', async () => {
  const expected = [
    'START CONTAINER_SELECTED',
    'STOP PAUSE',
    'START UNPAUSE',
    'START CONTAINER_SELECTED',
    'STOP NEXT',
    'START NEXT',
    'STOP STOP',
  ];
  // The last of them may be on its way.
  await eventually('all is told', async () => (await playReports()).length >= expected.length);
  const entries = await told('ledger?limit=10000');
  writeFileSync(join(folder, 'ledger.json'), JSON.stringify(entries, null, 1));
  assert.deepEqual(await playReports(), expected);
  assert.equal((await ledger('rating')).length, 1);
});

it('was heard as the files hold it', async () => {
  const { tracks } = await told('catalogue?limit=1000');
  const [first, second] = tracks
    .filter((track) => track.album === album)
    .sort((one, other) => one.file.localeCompare(other.file))
    .map((track) => decoded(track.file));
  const sound = ear.heard();
  writeFileSync(join(folder, 'sound.raw'), sound);
  const pausedAt = commonStart(sound, first);
  assert.ok(msOf(pausedAt) >= 3000, `alike for ${msOf(pausedAt)} ms`);
  const piece = bytesOf(200);
  const wentOn = sound.subarray(soundBeforePause + piece, soundBeforePause + 2 * piece);
  const place = placeOf(wentOn, first, soundBeforePause + piece);
  assert.ok(place >= 0, 'after the pause it is the same track');
  assert.ok(Math.abs(msOf(place - soundBeforePause - piece)) <= 500, `${msOf(place)} ms`);
  assert.ok(placeOf(sound.subarray(-piece), second, 0) >= 0, 'it ends in the second track');
});
