// Items that the player is bound to die of. It comes back without them.
import assert from 'node:assert/strict';
import { State } from '../support/house.mjs';
import { trials } from './support/trial.mjs';

const entry = trials();

const poisons = {
  'S25 a first chunk that starts behind its end': {
    kind: 'browse', effect: 'edit', set: { '/playables/*/naturalTrackPointer/indexWithinChunk': 99 },
  },
  'S25 a first chunk that starts before its beginning': {
    kind: 'browse', effect: 'edit', set: { '/playables/*/naturalTrackPointer/indexWithinChunk': -1 },
  },
};

async function comesBack(house) {
  await house.until(() => house.player.ended, 'the end');
  assert.equal(house.player.exit.signal, 'SIGABRT');
  assert.match(house.log() + house.player.said, /ASSERT/);
  await house.lift();
  await house.startPlayer();
  await house.signedIn();
  // What played before may have been ended for the poison; the poison itself is not tried again.
  assert.ok([State.idle, State.paused].includes((await house.now()).state));
  const told = await house.messages();
  assert.ok(told.some(({ title }) => title.includes('ended unexpectedly')), JSON.stringify(told));
}

for (const [title, rule] of Object.entries(poisons)) {
  entry(title, async (house) => {
    await house.fault(rule);
    const page = await house.rows(house.albums);
    const row = page.find((candidate) => candidate.title === house.album.title);
    await house.play(row).catch(() => undefined); // The answer dies with the player.
    await comesBack(house);
  }, { process: 'new', plays: true });
}

/** The next track sounds, or the player has ended. */
async function next(house) {
  try {
    const { title } = await house.now();
    await house.command('next');
    await house.until(async () => {
      const now = await house.now();
      return now.title !== title && now.state === State.playing;
    }, 'the next track');
  } catch (error) {
    if (error.code === 'ERR_ASSERTION') throw error;
    await house.until(() => house.player.ended, 'the end'); // The answer died with the player.
  }
}

entry('S26 a later chunk that starts behind its end', async (house) => {
  // With repeat a station would begin again rather than go on.
  await house.told('POST', 'player/mode', { mode: 0 });
  const station = await house.row('Stations', '');
  const index = '/trackContainerChunkDescriptions/*/nextTrackPointer/indexWithinChunk';
  await house.fault({ kind: 'chunk', effect: 'edit', set: { [index]: 99 } });
  assert.equal((await house.play(station)).status, 200);
  await house.waitForState(State.playing);
  const tracksOfAChunk = 10;
  for (let i = 0; i <= tracksOfAChunk && !house.player.ended; ++i) await next(house);
  await comesBack(house);
  await house.told('POST', 'player/mode', { mode: 4 });
}, { process: 'new', plays: true });
