// What the player knows of the sound, in words. Pure.

import { t } from './text.js';

const number = new Intl.NumberFormat(undefined, { maximumFractionDigits: 1 });

const rateText = (hertz) =>
  hertz > 0 ? t('audio.kilohertz', { rate: number.format(hertz / 1000) }) : '';
const depthText = (bits) => (bits > 0 ? t('audio.bits', { count: bits }) : '');
const speedText = (bitsPerSecond) =>
  bitsPerSecond > 0 ? t('audio.kilobits', { rate: Math.round(bitsPerSecond / 1000) }) : '';

function channelsText(channels) {
  if (channels === 1) return t('audio.mono');
  if (channels === 2) return t('audio.stereo');
  return channels > 0 ? t('audio.channels', { count: channels }) : '';
}

const listed = (texts) => texts.filter(Boolean).join(' · ');

/** What the sound is, short enough for a label; "" while that is not known. */
export function qualityText(audio) {
  if (!audio?.codec) return '';
  const { codec, sampleRate, bitDepth, bitRate, lossless } = audio;
  return listed([
    codec,
    lossless && t('audio.lossless'),
    rateText(sampleRate),
    lossless ? depthText(bitDepth) : speedText(bitRate),
  ]);
}

function sourceLines({ source = {}, lossless }) {
  return [
    source.container && t('audio.container', { container: source.container }),
    t(lossless ? 'audio.losslessText' : 'audio.lossyText'),
    source.encrypted && t('audio.encrypted'),
    source.renewed && t('audio.renewed'),
  ];
}

function outputLines({ output = {}, sampleRate }) {
  const converted = output.sampleRate > 0 && sampleRate > 0 && output.sampleRate !== sampleRate;
  return [
    listed([
      rateText(output.sampleRate),
      depthText(output.bitDepth),
      channelsText(output.channels),
    ]),
    converted && t('audio.converted', { from: rateText(sampleRate), to: rateText(output.sampleRate) }),
    output.sink && output.sink !== output.name && t('audio.sink', { sink: output.sink }),
  ];
}

function volumeLine({ volume, mute }) {
  if (mute) return t('audio.muted');
  return volume === 100 ? t('audio.full') : t('audio.scaled', { volume });
}

/** The stages between the service and the ear: { id, title, lines }, in the sound's order. */
export function stagesOf(player) {
  const audio = player?.audio;
  if (!audio?.codec) return [];
  const what = listed([
    audio.codec,
    rateText(audio.sampleRate),
    audio.lossless ? depthText(audio.bitDepth) : speedText(audio.bitRate),
    channelsText(audio.channels),
  ]);
  return [
    { id: 'source', title: what, lines: sourceLines(audio) },
    { id: 'decoder', title: audio.decoder || t('audio.noDecoder'), lines: [] },
    { id: 'volume', title: volumeLine(player), lines: [] },
    { id: 'output', title: audio.output?.name ?? '', lines: outputLines(audio) },
  ].map((stage) => ({ ...stage, lines: stage.lines.filter(Boolean) }));
}
