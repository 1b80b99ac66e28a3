// The emulator's own pages in a real browser: the fault dial, the ledger, and the page where a login
// is allowed. TAVU_EMULATOR names the program.
import assert from 'node:assert/strict';
import { spawn } from 'node:child_process';
import { mkdtempSync, mkdirSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { createInterface } from 'node:readline';
import { after, before, it } from 'node:test';

import { assertAccessible, assertNoSidewaysScroll, assertTargets } from './support/axe.mjs';
import { assertNoFaults, launch, openPage, widths } from './support/browser.mjs';
import { reach } from './support/slowness.mjs';

// The verifier and the challenge of RFC 7636, appendix B.
const verifier = 'dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk';
const challenge = 'E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM';

let browser;
let folder;
let program;
let ready;
let road;

async function startEmulator() {
  folder = mkdtempSync(join(tmpdir(), 'emulator-'));
  const music = join(folder, 'music');
  mkdirSync(music);
  const options = ['--state', join(folder, 'state'), '--poll-interval', '0', music];
  program = spawn(process.env.TAVU_EMULATOR, options, { stdio: ['ignore', 'pipe', 'ignore'] });
  const lines = createInterface({ input: program.stdout });
  const [line] = await new Promise((resolve, reject) => {
    lines.once('line', (text) => resolve([text]));
    program.once('exit', (code) => reject(new Error(`the emulator has ended with ${code}`)));
  });
  ready = JSON.parse(line);
  road = await reach(ready.control);
}

before(async () => {
  await startEmulator();
  browser = await launch();
});
after(async () => {
  await browser?.close();
  road?.close();
  program?.removeAllListeners('exit').kill();
  rmSync(folder, { recursive: true, force: true });
});

const control = (method, path, body) =>
  fetch(ready.control + path, {
    method,
    headers: { 'content-type': 'application/json' },
    body: body && JSON.stringify(body),
  }).then((answer) => answer.json());

const form = (path, fields) =>
  fetch(ready.http + path, { method: 'POST', body: new URLSearchParams(fields) });

async function statusOf(path) {
  const { access_token: token } = await control('POST', 'login/token');
  const answer = await fetch(ready.http + path, { headers: { authorization: `Bearer ${token}` } });
  return answer.status;
}

/** Looks at a page of the emulator at a phone's width and checks what every page must keep to. */
async function look(address, work) {
  const page = await openPage(browser, address, { viewport: widths.phone });
  try {
    await work(page);
    await assertAccessible(page, address);
    await assertNoSidewaysScroll(page, address);
    await assertTargets(page, address);
    assertNoFaults(page);
  } finally {
    await page.context().close();
  }
}

it('turns the dial by its buttons', () =>
  look(road.url, async (page) => {
    await page.getByText('None: the service behaves.').waitFor();
    await page.getByRole('button', { name: 'Service down, three requests' }).click();
    await page.getByRole('cell', { name: '3 requests: kind browse' }).waitFor();
    assert.equal(await statusOf('albums/'), 503);
    await page.getByRole('button', { name: 'Remove all' }).click();
    await page.getByText('None: the service behaves.').waitFor();
    assert.equal(await statusOf('albums/'), 200);
  }));

it('makes a rule of the form, and says what is wrong with one', () =>
  look(road.url, async (page) => {
    await page.getByLabel('Path').fill('/tracks/');
    await page.getByLabel('Then strike').fill('1');
    await page.getByLabel('Effect').selectOption('status');
    await page.getByLabel('status', { exact: false }).last().waitFor();
    await page.locator('input[name=status]').fill('many');
    await page.getByRole('button', { name: 'Add rule' }).click();
    await page.getByRole('alert').getByText('cannot be read').waitFor();
    await page.locator('input[name=status]').fill('418');
    await page.getByRole('button', { name: 'Add rule' }).click();
    await page.getByRole('cell', { name: '1 request: path /tracks/' }).waitFor();
    assert.equal(await statusOf('tracks/'), 418);
    await page.getByText('1, spent').waitFor();
    await page.getByRole('button', { name: /^Remove rule/ }).click();
    await page.getByText('None: the service behaves.').waitFor();
  }));

it('shows in the ledger what comes in and what was struck', () =>
  look(`${road.url}ledger.html`, async (page) => {
    await control('POST', 'ledger/clear', {});
    await control('POST', 'faults', { name: 'flood', kind: 'search', effect: 'status', times: 1 });
    await statusOf('search/?keywords=a');
    await statusOf('playlists/');
    await page.getByText('fault “flood”').waitFor();
    await page.getByText('/playlists/').waitFor();
    await page.getByLabel('Show').selectOption('search');
    await page.getByText('/playlists/').waitFor({ state: 'detached' });
    await page.getByText('/search/?keywords=a').waitFor();
    await page.getByRole('button', { name: 'Clear' }).click();
    await page.getByText('/search/?keywords=a').waitFor({ state: 'detached' });
    await control('DELETE', 'faults');
  }));

it('shows in the ledger what was asked for last, whichever answer comes last', () =>
  look(`${road.url}ledger.html`, async (page) => {
    const question = /ledger\?since=/;
    let release;
    const held = new Promise((arrived) => {
      page.route(question, (route) => {
        release = () => route.continue();
        arrived();
      }, { times: 1 });
    });
    await held;
    await statusOf('search/?keywords=late');
    const rated = page.waitForResponse(/kind=rating/);
    await page.getByLabel('Show').selectOption('rating');
    await (await rated).finished();
    const late = page.waitForResponse((answer) => !answer.url().includes('kind='));
    await release();
    await (await late).finished();
    await page.evaluate(() => new Promise((done) => setTimeout(done)));
    const entry = page.getByText('/search/?keywords=late');
    assert.equal(await entry.count(), 0);
    await page.getByLabel('Show').selectOption('search');
    await entry.waitFor();
  }));

it('lets the user allow a login', async () => {
  const begun = await form('oauth2/device', {
    client_id: ready.clientId,
    code_challenge: challenge,
    code_challenge_method: 'S256',
  }).then((answer) => answer.json());
  await look(begun.verification_uri_complete, async (page) => {
    assert.equal(await page.getByLabel('Code').inputValue(), begun.user_code);
  });
  await look(begun.verification_uri, async (page) => {
    await page.getByLabel('Code').fill(begun.user_code.toLowerCase());
    await page.getByRole('button', { name: 'Allow' }).click();
    await page.getByRole('heading', { name: 'Connected' }).waitFor();
  });
  const tokens = await form('oauth2/token', {
    client_id: ready.clientId,
    client_secret: 'emulator-secret',
    grant_type: 'device_code',
    device_code: begun.device_code,
    code_verifier: verifier,
  });
  assert.equal(tokens.status, 200);
});
