// More clients than the player has sockets for: it turns them away, and the music plays on.
import assert from 'node:assert/strict';
import { chmodSync, mkdtempSync, rmSync, writeFileSync } from 'node:fs';
import { connect } from 'node:net';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after, before, test } from 'node:test';
import { House, State } from '../support/house.mjs';

const openFiles = 160;
const clients = 200;

let folder;
let house;

before(async () => {
  folder = mkdtempSync(join(tmpdir(), 'tavu-crowd-'));
  const few = join(folder, 'tavu-player');
  writeFileSync(few, `#!/bin/bash\nulimit -n ${openFiles}\nexec "${process.env.TAVU_PLAYER}" "$@"\n`);
  chmodSync(few, 0o700);
  process.env.TAVU_PLAYER = few;
  house = await House.open();
});
after(async () => {
  await house?.close();
  rmSync(folder, { recursive: true, force: true });
});

/** A client that begins a request and never ends it. Tells whether it was turned away. */
function slowClient() {
  const { hostname, port } = new URL(house.url);
  const socket = connect(Number(port), hostname);
  const client = { socket, said: '', over: false };
  socket.setEncoding('latin1');
  socket.on('data', (text) => { client.said += text; });
  socket.on('error', () => {});
  socket.on('close', () => { client.over = true; });
  socket.write('GET /api/v1/state HTTP/1.1\r\nHost: lo');
  return client;
}

test('slow clients without number are turned away, and the next track begins all the same', async () => {
  assert.equal((await house.play(await house.row('Albums', 'Night Trains'))).status, 200);
  const { title } = await house.waitForState(State.playing);
  const crowd = Array.from({ length: clients }, slowClient);
  try {
    await house.until(() => crowd.some(({ said }) => said.startsWith('HTTP/1.1 503 ')), 'the first to be turned away');
    assert.ok(house.player.figures().sockets < openFiles * 0.75);
    // Its sound, its next chunk and its reports need connections of their own.
    await house.until(async () => {
      const player = await house.now().catch(() => null);
      return player?.title !== title && player?.state === State.playing;
    }, 'the next track', 60000);
    assert.equal(house.player.findings, '');
  } finally {
    for (const { socket } of crowd) socket.destroy();
  }
  await house.until(async () => (await house.now().catch(() => null))?.state === State.playing, 'the player to answer');
  assert.equal(await house.login(), 'loggedIn');
});

test('a client that never ends its head is told so, and its place is free again', async () => {
  const client = slowClient();
  await house.until(() => client.over, 'the end of its time', 30000);
  assert.match(client.said, /^HTTP\/1\.1 408 /);
  assert.equal((await house.ask('GET', 'state')).status, 200);
});
