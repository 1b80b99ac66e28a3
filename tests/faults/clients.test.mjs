// Clients of the control API that are wrong, hasty or hostile, at the running player.
import assert from 'node:assert/strict';
import { connect } from 'node:net';
import { trials } from './support/trial.mjs';

const entry = trials();
const endMs = 30000;

/** What the player says to these bytes, until it closes or has said as many answers as wanted. */
function say(house, bytes, { answers = 1, close = false } = {}) {
  const { hostname, port } = new URL(house.url);
  return new Promise((done, fail) => {
    const socket = connect(Number(port), hostname);
    let said = '';
    const late = setTimeout(() => { socket.destroy(); fail(new Error(`no answer: ${said.slice(-300)}`)); }, endMs);
    const end = (closed) => { clearTimeout(late); socket.destroy(); done({ said, closed }); };
    socket.setEncoding('latin1');
    socket.on('data', (text) => {
      said += text;
      if (!close && said.split('HTTP/1.1 ').length - 1 >= answers && said.endsWith('}')) end(false);
    });
    socket.on('error', () => end(true));
    socket.on('close', () => end(true));
    socket.write(bytes);
  });
}

const host = (house) => new URL(house.url).host;
const get = (house, target) => `GET ${target} HTTP/1.1\r\nHost: ${host(house)}\r\nConnection: close\r\n\r\n`;
const statusOf = ({ said }) => Number(/^HTTP\/1\.1 (\d+)/.exec(said)?.[1] ?? 0);

/** Ways out of a folder: every spelling of the step, of the separator, to several depths. */
function traversals() {
  const steps = ['..', '%2e%2e', '.%2e', '%2E.', '%252e%252e', '..%00', '%c0%ae%c0%ae', '....'];
  const separators = ['/', '%2f', '\\', '%5c', '//'];
  const depths = [1, 3, 8];
  const starts = ['/', '/js/', '/api/v1/artwork/', '/api/v1/'];
  const ends = ['etc/passwd', 'tokens.json'];
  return steps.flatMap((step) => separators.flatMap((separator) => depths.flatMap((depth) => starts.map((start, index) =>
    `${start}${`${step}${separator}`.repeat(depth)}${ends[index % ends.length]}`))))
    .concat(['//etc/passwd', '/\\\\host\\share\\file', '/C:/windows/win.ini', '/file:///etc/passwd', '/js/\0/../a']);
}

entry('C11 no spelling of a path leads out of the page\'s folder', async (house) => {
  const all = traversals();
  assert.ok(all.length >= 200, `${all.length}`);
  for (const target of all) {
    const answer = await say(house, get(house, target), { close: true });
    assert.ok([400, 404].includes(statusOf(answer)), `${target}: ${answer.said.slice(0, 100)}`);
    assert.ok(!/root:|refreshToken/.test(answer.said), target);
  }
});

const smuggled = {
  'a length and chunks': 'Content-Length: 2\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n',
  'chunks twice': 'Transfer-Encoding: chunked\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n',
  'two lengths': 'Content-Length: 2\r\nContent-Length: 3\r\n\r\n{}',
  'a negative length': 'Content-Length: -1\r\n\r\n',
  'a length that is no number': 'Content-Length: 0x2\r\n\r\n{}',
  'a blank before the colon': 'Content-Length : 2\r\n\r\n{}',
  'a folded line': 'X-Long: a\r\n b\r\nContent-Length: 2\r\n\r\n{}',
};
entry('C13 heads that can be read in two ways are refused, and the connection ends', async (house) => {
  for (const [title, rest] of Object.entries(smuggled)) {
    const hidden = get(house, '/api/v1/state');
    const answer = await say(house,
      `POST /api/v1/player/stop HTTP/1.1\r\nHost: ${host(house)}\r\nContent-Type: application/json\r\n${rest}${hidden}`,
      { close: true });
    assert.equal(statusOf(answer), 400, `${title}: ${answer.said.slice(0, 200)}`);
    assert.equal(answer.said.split('HTTP/1.1 ').length - 1, 1, `${title}: what was hidden is not answered`);
    assert.ok(answer.closed, title);
  }
});

entry('C14 a request line of a MiB, and 10,000 fields: refused early', async (house) => {
  const long = await say(house, `GET /${'a'.repeat(1 << 20)} HTTP/1.1\r\n`, { close: true });
  assert.ok([0, 414].includes(statusOf(long)), long.said.slice(0, 100));
  const many = await say(house,
    `GET /api/v1/state HTTP/1.1\r\nHost: ${host(house)}\r\n${'X-A: b\r\n'.repeat(10000)}\r\n`, { close: true });
  assert.ok([0, 431].includes(statusOf(many)), many.said.slice(0, 100));
});

entry('C15 connections without number, closed at once and reset', async (house) => {
  const { hostname, port } = new URL(house.url);
  const before = house.player.figures();
  const rounds = 50;
  for (let round = 0; round < rounds; ++round) {
    await Promise.all(Array.from({ length: 100 }, (_, index) => new Promise((done) => {
      const socket = connect(Number(port), hostname);
      socket.on('error', () => {});
      socket.on('close', done);
      socket.on('connect', () => {
        if (index % 3 === 0) socket.resetAndDestroy();
        else if (index % 3 === 1) socket.end();
        else { socket.write('GET / HT'); socket.destroy(); }
      });
    })));
  }
  assert.equal((await house.ask('GET', 'state')).status, 200);
  await house.until(() => house.player.figures().sockets <= before.sockets + 10, 'the sockets to close');
});

entry('C16 a thousand commands in one breath are answered in their order', async (house) => {
  const count = 1000;
  const command = (volume) => {
    const body = JSON.stringify({ volume });
    return `POST /api/v1/player/volume HTTP/1.1\r\nHost: ${host(house)}\r\nContent-Type: application/json\r\n`
      + `Content-Length: ${body.length}\r\n\r\n${body}`;
  };
  const bytes = Array.from({ length: count }, (_, index) => command(index % 101)).join('') + command(40);
  const { said } = await say(house, bytes, { answers: count + 1 });
  assert.equal(said.match(/HTTP\/1\.1 200 /g).length, count + 1);
  assert.equal((await house.now()).volume, 40);
});

const odd = [
  ['GET', 'rows?path=&from=-1&to=9'], ['GET', 'rows?path=&from=5&to=2'], ['GET', 'rows?path=&from=x&to=9'],
  ['GET', 'rows?path=&from=0&to=99999999999999999999'], ['GET', 'rows?path=&from=1e3&to=9'],
  ['POST', 'player/volume', { volume: -1 }], ['POST', 'player/volume', { volume: 101 }],
  ['POST', 'player/volume', { volume: null }], ['POST', 'player/volume', { volume: '7' }],
  ['POST', 'player/volume', { volume: 1.5 }], ['POST', 'player/volume', {}],
  ['POST', 'player/seek', { position: -1 }], ['POST', 'player/seek', { position: 1e300 }],
  ['POST', 'player/seek', { position: 'NaN' }], ['POST', 'player/seek', { position: null }],
  ['POST', 'player/mode', { mode: 6 }], ['POST', 'player/mode', { mode: -1 }], ['POST', 'player/mode', {}],
];
entry('C18 rows, volumes, positions and modes that cannot be: refused, and nothing changes', async (house) => {
  for (const [method, path, body] of odd) {
    const { status, json } = await house.ask(method, path, body);
    assert.ok([400, 409, 422].includes(status), `${path} ${JSON.stringify(body)}: ${status}`);
    assert.notEqual(`${json.title ?? ''}${json.detail ?? ''}`, '', path);
  }
  const most = await house.ask('GET', `rows?path=${encodeURIComponent(house.albums)}&from=0&to=2147483647`);
  assert.equal(most.status, 200);
  assert.equal(most.json.rows.length, 3);
});

entry('C19 the page is asked for again and again, and events with it', async (house) => {
  const before = house.player.figures();
  for (let round = 0; round < 200; ++round) {
    const end = new AbortController();
    const [page, events] = await Promise.all([
      fetch(`${house.url}/`, { signal: end.signal }),
      fetch(`${house.url}/api/v1/events`, { signal: end.signal, headers: { accept: 'text/event-stream' } }),
    ]);
    assert.equal(page.status, 200);
    assert.equal(events.status, 200);
    await page.arrayBuffer();
    const { value } = await events.body.getReader().read();
    assert.match(new TextDecoder().decode(value), /event: |data: |retry: /);
    end.abort();
  }
  await house.until(() => house.player.figures().sockets <= before.sockets + 20, 'the sockets to close');
});
