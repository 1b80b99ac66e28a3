// Items that the player is bound to die of. It comes back without them.
import assert from 'node:assert/strict';
import { State } from './support/house.mjs';
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
