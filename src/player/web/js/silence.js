// Ten seconds of nothing, for browsers that show the controls of sounding pages only.

const seconds = 10;
const rate = 8000;
const headerBytes = 44;

/** A WAV file of silence: 8 bits, one channel. */
export function silentWave() {
  const bytes = new Uint8Array(headerBytes + seconds * rate).fill(0x80);
  const view = new DataView(bytes.buffer);
  const word = (at, text) => [...text].forEach((c, i) => view.setUint8(at + i, c.charCodeAt(0)));
  word(0, 'RIFF');
  view.setUint32(4, bytes.length - 8, true);
  word(8, 'WAVEfmt ');
  view.setUint32(16, 16, true);
  view.setUint16(20, 1, true); // PCM
  view.setUint16(22, 1, true);
  view.setUint32(24, rate, true);
  view.setUint32(28, rate, true);
  view.setUint16(32, 1, true);
  view.setUint16(34, 8, true);
  word(36, 'data');
  view.setUint32(40, seconds * rate, true);
  return new Blob([bytes], { type: 'audio/wav' });
}

/** Plays silence while `wanted()` and the player plays. Browsers allow it after a first press. */
export function createSilence({ wanted, createAudio, toAddress }) {
  let audio = null;
  let state = 'none';
  const start = () => {
    audio ??= Object.assign(createAudio(), { src: toAddress(silentWave()), loop: true });
    return audio.play()?.catch(() => {}); // not before a press; the next change tries again
  };
  const apply = () => {
    if (wanted() && state === 'playing') start();
    else audio?.pause();
  };
  return {
    follow(next) {
      state = next;
      apply();
    },
    /** Runs after the reader's choice has changed. */
    apply,
  };
}
