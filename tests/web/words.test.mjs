// What the service says when it refuses, with the real programs: its words and its buttons reach the
// page, the terminal and the events alike, wherever it refuses, and the buttons do what they say.
// TAVU_CTL names the terminal's program.
import assert from 'node:assert/strict';
import { execFile } from 'node:child_process';
import { after, before, describe, it } from 'node:test';

import { assertNoFaults, launch, openPage } from './support/browser.mjs';
import { Person } from './support/person.mjs';
import { startPrograms } from './support/programs.mjs';
import { eventually, readEvents } from './support/waiting.mjs';

const report = {
  brief: 'The service has a question',
  explanation: 'Somebody else listens with your account.',
};
const names = ['Listen here', 'Not now'];
/** Refuses once, with a button that the service is told of and one that closes. */
const refusal = () => ({
  effect: 'conflict',
  times: 1,
  ...report,
  options: [
    { label: names[0], action: 'post', uri: `${programs.service}actions/go-on`, resume: false },
    { label: names[1], action: 'close' },
  ],
});

let programs;
let browser;
let page;
let person;
let listening;
const events = [];

before(async () => {
  programs = await startPrograms({ autoApprove: true, emulator: ['--unrated-every', '0'] });
  assert.equal((await ctl('login')).code, 0);
  listening = new AbortController();
  let begun = false;
  const keep = (name, data) => {
    begun = true;
    if (name === 'message') events.push(data);
  };
  readEvents(`${programs.url}/api/v1/events`, keep, listening.signal).catch(() => {});
  await eventually('the stream of events has begun', () => begun);
  browser = await launch();
  page = await openPage(browser, programs.url);
  person = new Person(page, { wide: true });
  await page.locator('.rows .row[data-at]').first().waitFor();
});
after(async () => {
  listening?.abort();
  await browser?.close();
  await programs?.close();
});

/** Runs the terminal's program: { code, out, err }. */
function ctl(...words) {
  return new Promise((done) => {
    const options = ['--url', programs.url, ...words];
    execFile(process.env.TAVU_CTL, options, (error, out, err) =>
      done({ code: error?.code ?? 0, out, err }),
    );
  });
}

const control = (method, path, body) =>
  fetch(programs.control + path, {
    method,
    headers: { 'content-type': 'application/json' },
    body: body && JSON.stringify(body),
  }).then((answer) => answer.json());

const dial = (rule) => control('POST', 'faults', rule);
const answered = async () => (await control('GET', 'ledger?kind=action&limit=1000')).entries.length;
const kept = async () => {
  const { messages } = await (await fetch(`${programs.url}/api/v1/messages`)).json();
  return messages;
};
const buttonsOf = ({ rows = [] }) => rows.filter(({ type }) => type !== 6).map((row) => row.title);

/** Everybody hears of it: the events, the kept messages, the terminal, and whoever sees the page. */
async function everybodyHears(title, titles) {
  const tells = (message) => message.title === title;
  await eventually('an event tells of it', () => events.some(tells));
  assert.deepEqual(buttonsOf(events.findLast(tells)), titles);
  assert.deepEqual(buttonsOf((await kept()).findLast(tells)), titles);
  const { out } = await ctl('messages');
  for (const text of [title, ...titles]) assert.match(out, new RegExp(text));
  await person.goTo('Messages');
  const message = page
    .getByRole('region', { name: 'Messages' })
    .getByRole('listitem')
    .filter({ hasText: title })
    .first();
  await message.waitFor();
  for (const name of titles) await message.getByRole('button', { name }).waitFor();
  return message;
}

/** The button posts to the service from the page and from the terminal. */
async function pressEverywhere(message) {
  for (const press of [
    () => message.getByRole('button', { name: names[0] }).click(),
    async () => assert.equal((await ctl('press', names[0])).code, 0),
  ]) {
    const before = await answered();
    await press();
    await eventually('the service is told', async () => (await answered()) > before);
  }
}

const forgetAll = async () => {
  events.length = 0;
  await control('DELETE', 'faults');
};

describe('the words of the service and its buttons', () => {
  it('while browsing', async () => {
    await dial({ kind: 'browse', ...refusal() });
    await person.row('Open Playlists').click();
    const screen = page.getByRole('article');
    await screen.getByRole('heading', { name: report.brief }).waitFor();
    await screen.getByText(report.explanation).waitFor();
    const before = await answered();
    await screen.getByRole('button', { name: names[0] }).click();
    await eventually('the service is told', async () => (await answered()) > before);
    await person.goHome();

    await dial({ path: '/artists/*', ...refusal() });
    const { code, out } = await ctl('ls', 'Artists');
    assert.equal(code, 0);
    for (const text of [report.brief, report.explanation, ...names])
      assert.match(out, new RegExp(text));
    await forgetAll();
  });

  it('when a play command is refused', async () => {
    await dial({ kind: 'chunk', ...refusal() });
    const { code, err } = await ctl('play', 'Albums/Night Trains');
    assert.equal(code, 1);
    for (const text of [report.brief, report.explanation, ...names])
      assert.match(err, new RegExp(text));
    await pressEverywhere(await everybodyHears(report.brief, names));
    await forgetAll();
  });

  it('when a report in the middle of the music is refused', async () => {
    assert.equal((await ctl('play', 'Albums/Night Trains')).code, 0);
    await dial({ kind: 'report', ...refusal(), times: 2, brief: 'Too many listeners' });
    await person.now.getByRole('button', { name: 'Next track' }).click();
    await pressEverywhere(await everybodyHears('Too many listeners', names));
    await forgetAll();
  });

  it('when it answers a rating, and when it cannot', async () => {
    assert.equal((await ctl('play', 'Albums/Night Trains')).code, 0);
    await dial({ kind: 'rating', effect: 'rating', message: 'Noted.', shouldSkip: false, times: 1 });
    const { code, out } = await ctl('like');
    assert.equal(code, 0);
    assert.match(out, /Noted\./);
    await everybodyHears('Noted.', []);
    await dial({ kind: 'rating', effect: 'status', status: 500, times: 1 });
    await person.now.getByRole('button', { name: 'Thumbs down' }).click();
    await page.locator('.toast').getByText('500').waitFor();
    await forgetAll();
  });

  it('when a track has to be skipped, which leaves a note', async () => {
    await dial({ kind: 'audio', effect: 'status', status: 404, times: 2 });
    await ctl('play', 'Albums/Night Trains');
    const skipped = ({ kind, title }) => kind === 'skipped' && title.includes('Platform Two');
    await eventually('a note tells of the track', () => events.some(skipped));
    assert.ok((await kept()).some(skipped));
    await person.goTo('Messages');
    await page
      .getByRole('region', { name: 'Messages' })
      .getByRole('listitem')
      .filter({ hasText: 'Platform Two' })
      .first()
      .waitFor();
    await forgetAll();
  });
});

it('leaves no fault in the page', () => assertNoFaults(page));
