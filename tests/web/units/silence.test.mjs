import assert from 'node:assert/strict';
import { test } from 'node:test';

import { createSilence, silentWave } from '../../../src/player/web/js/silence.js';

test('the silence is a sound file of ten seconds', async () => {
  const bytes = Buffer.from(await silentWave().arrayBuffer());
  assert.equal(bytes.toString('latin1', 0, 4), 'RIFF');
  assert.equal(bytes.readUInt32LE(4), bytes.length - 8);
  assert.equal(bytes.readUInt32LE(40) / bytes.readUInt32LE(28), 10);
  assert.ok(bytes.subarray(44).every((sample) => sample === 0x80));
});

test('nothing plays unless asked for, and then only while the player plays', () => {
  const calls = [];
  let wanted = false;
  const audio = { play: () => calls.push('play') && undefined, pause: () => calls.push('pause') };
  const silence = createSilence({
    wanted: () => wanted,
    createAudio: () => audio,
    toAddress: (blob) => blob.type,
  });
  silence.follow('playing');
  assert.deepEqual(calls, []);
  wanted = true;
  silence.apply();
  silence.follow('paused');
  assert.deepEqual(calls, ['play', 'pause']);
  assert.equal(audio.loop, true);
  assert.equal(audio.src, 'audio/wav');
});
