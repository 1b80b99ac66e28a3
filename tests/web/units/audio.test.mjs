import assert from 'node:assert/strict';
import { test } from 'node:test';

import { qualityText, stagesOf } from '../../../src/player/web/js/audio.js';

const flac = {
  codec: 'FLAC',
  lossless: true,
  sampleRate: 96000,
  bitDepth: 24,
  channels: 2,
  decoder: 'FLAC audio decoder',
  source: { encrypted: true, renewed: true },
  output: { name: 'DAC', sink: 'ALSA', sampleRate: 48000, bitDepth: 16, channels: 2 },
};
const opus = {
  codec: 'Opus',
  lossless: false,
  sampleRate: 48000,
  channels: 1,
  source: { container: 'Ogg', encrypted: false, renewed: false },
  output: { name: 'DAC', sampleRate: 48000 },
};
const stage = (player, id) => stagesOf(player).find((each) => each.id === id);

test('the label says what is known and nothing else', () => {
  assert.equal(qualityText(flac), 'FLAC · lossless · 96 kHz · 24 bit');
  assert.equal(qualityText({ ...flac, sampleRate: 44100, bitDepth: 16 }),
    'FLAC · lossless · 44.1 kHz · 16 bit');
  assert.equal(qualityText(opus), 'Opus · 48 kHz');
  assert.equal(qualityText({ ...opus, bitRate: 127600 }), 'Opus · 48 kHz · 128 kbit/s');
  assert.equal(qualityText({}), '');
  assert.equal(qualityText(undefined), '');
});

test('the way of the sound has its stages in order', () => {
  assert.deepEqual(stagesOf({ audio: flac, volume: 80 }).map(({ id }) => id),
    ['source', 'decoder', 'volume', 'output']);
  assert.deepEqual(stagesOf({ audio: {} }), []);
  assert.deepEqual(stagesOf(null), []);
});

test('the source says how it was packed, protected and renewed', () => {
  const { title, lines } = stage({ audio: flac, volume: 100 }, 'source');
  assert.equal(title, 'FLAC · 96 kHz · 24 bit · stereo');
  assert.deepEqual(lines, [
    'Lossless: decoded to the samples that went in',
    'Protected: fetched with keys of its own',
    'The address had expired and was renewed',
  ]);
  assert.deepEqual(stage({ audio: opus, volume: 100 }, 'source').lines,
    ['Packed in Ogg', 'Compressed with loss, to save data']);
});

test('the volume says whether it touches the samples', () => {
  const title = (player) => stage({ audio: flac, ...player }, 'volume').title;
  assert.equal(title({ volume: 100 }), '100 %: samples pass unchanged');
  assert.equal(title({ volume: 62 }), '62 %: samples are scaled');
  assert.equal(title({ volume: 62, mute: true }), 'Muted');
});

test('the output says what it is really given, and when that was converted', () => {
  assert.deepEqual(stage({ audio: flac }, 'output').lines,
    ['48 kHz · 16 bit · stereo', 'Converted from 96 kHz to 48 kHz', 'Through ALSA']);
  assert.deepEqual(stage({ audio: opus }, 'output').lines, ['48 kHz']);
});
