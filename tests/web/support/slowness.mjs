// A slow network, page and hand, to find what the page or its tests take for granted; off unless asked
// for:
//   TAVU_WEB_LATENCY     "50-150": all that goes between page and player takes so many ms, each time anew
//   TAVU_WEB_SEED        a number with which the same times come again
//   TAVU_WEB_SLOWDOWN    "4": the page computes so many times slower
//   TAVU_WEB_HESITATION  "500": so many ms pass before a test does or looks at anything
import { connect, createServer } from 'node:net';

const { TAVU_WEB_LATENCY, TAVU_WEB_SEED, TAVU_WEB_SLOWDOWN, TAVU_WEB_HESITATION } = process.env;

/** For the browser's start. */
export const hesitationMs = Number(TAVU_WEB_HESITATION ?? 0);

const [least, most] = (TAVU_WEB_LATENCY ?? '0').split('-').map(Number);
const isSlow = most > 0;
let seed = Number(TAVU_WEB_SEED ?? Date.now() % 1e6);
if (isSlow) console.log(`latency ${TAVU_WEB_LATENCY} ms, seed ${seed}`);

/** At least 0, less than 1: the generator of Lehmer, which wants no more than a line. */
const random = () => {
  seed = (((seed % 2147483646) + 1) * 48271) % 2147483647;
  return seed / 2147483647;
};

const aWhile = () =>
  new Promise((done) => {
    setTimeout(done, least + random() * (most - least));
  });

/** Takes what comes from one socket to the other, later but in the same order. */
function relay(from, to) {
  let before = Promise.resolve();
  const later = (work) => {
    before = Promise.all([before, aWhile()]).then(work);
  };
  from.on('data', (part) => later(() => to.write(part)));
  from.on('error', () => {}); // it is closed next
  from.on('close', () => later(() => to.destroySoon()));
}

const listening = (server, port) =>
  new Promise((done) => {
    server.listen(port, '127.0.0.1', () => done(server.address().port));
  });

/** A server at `port` through which one reaches the one at `target`: { port, close }. */
async function openRoad(target, port = 0) {
  const sockets = new Set();
  const road = createServer((near) => {
    const far = connect(target, '127.0.0.1');
    for (const socket of [near, far]) {
      socket.setNoDelay();
      sockets.add(socket);
      socket.on('close', () => sockets.delete(socket));
    }
    relay(near, far);
    relay(far, near);
  });
  return {
    port: await listening(road, port),
    close() {
      road.close();
      for (const socket of sockets) socket.destroy();
    },
  };
}

/** Lets `server` be reached at `port`, or at a free one: { port, close }. */
export async function listen(server, port = 0) {
  if (isSlow) return openRoad(await listening(server, 0), port);
  return { port: await listening(server, port), close() {} };
}

/** The address by which one reaches `url`: { url, close }. */
export async function reach(url) {
  if (!isSlow) return { url, close() {} };
  const { port } = new URL(url);
  const road = await openRoad(Number(port));
  return { url: url.replace(`:${port}`, `:${road.port}`), close: road.close };
}

/** Lets what a page computes take its time. */
export async function slowDown(page) {
  if (!TAVU_WEB_SLOWDOWN) return;
  const session = await page.context().newCDPSession(page);
  await session.send('Emulation.setCPUThrottlingRate', { rate: Number(TAVU_WEB_SLOWDOWN) });
}
