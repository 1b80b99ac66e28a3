// What was heard, beside what the files hold: 16-bit stereo at 44.1 kHz, as bytes.
import { execFileSync } from 'node:child_process';
import { createServer } from 'node:net';

const format = 'audio/x-raw,format=S16LE,rate=44100,channels=2,layout=interleaved';
const bytesPerFrame = 4;
const framesPerMs = 44.1;

export const bytesOf = (ms) => Math.round(ms * framesPerMs) * bytesPerFrame;
export const msOf = (bytes) => bytes / bytesPerFrame / framesPerMs;

/** The samples of a file. */
export function decoded(file) {
  const location = `location=${JSON.stringify(file)}`;
  const line = `filesrc ${location} ! decodebin ! audioconvert ! ${format} ! fdsink fd=1`;
  const gst = ['-q', ...line.match(/(?:[^\s"]|"[^"]*")+/g).map((word) => word.replaceAll('"', ''))];
  return execFileSync('gst-launch-1.0', gst, { maxBuffer: 1 << 28 });
}

/** How many bytes both begin with alike. */
export function commonStart(one, other) {
  const length = Math.min(one.length, other.length);
  let at = 0;
  while (at < length && one[at] === other[at]) ++at;
  return at;
}

/** Where `part` stands in `whole`, whole frames only, nearest to `near`; -1 when nowhere. */
export function placeOf(part, whole, near) {
  let best = -1;
  for (let at = whole.indexOf(part); at >= 0; at = whole.indexOf(part, at + 1)) {
    if (at % bytesPerFrame === 0 && (best < 0 || Math.abs(at - near) < Math.abs(best - near)))
      best = at;
  }
  return best;
}

/** Hears what a sink sends to it over a socket of this machine; `heard()` is all of it so far. */
export class Ear {
  static async open() {
    const ear = new Ear();
    ear.parts = [];
    ear.server = createServer((socket) => {
      socket.on('error', () => {}); // The player may end without a word.
      socket.on('data', (part) => ear.parts.push(part));
    });
    await new Promise((done) => {
      ear.server.listen(0, '127.0.0.1', done);
    });
    return ear;
  }

  /** Where the player's sound has to go. */
  get output() {
    const { port } = this.server.address();
    return `audioconvert ! ${format} ! tcpclientsink sync=true host=127.0.0.1 port=${port}`;
  }

  heard() {
    return Buffer.concat(this.parts);
  }

  close() {
    this.server.close();
  }
}
