// What a stranger does with the player, from the first sign-in to an error screen. It knows the
// music by `trails` only, so it runs against the mock and against a real player alike:
//   TAVU_WEB_URL     address of the player's page; without it the mock is started
//   TAVU_WEB_TRAILS  JSON file with the titles to press, as in mockTrails (support/catalogue.mjs):
//                    album, more, station, error and ask are lists of row titles from the root,
//                    search is a title that a search for itself finds; the first button of the
//                    screen at ask is answered by closing it
//   TAVU_WEB_APPROVE name (a regular expression) of the button on the service's sign-in page
import assert from 'node:assert/strict';

import { named, picture } from './support/person.mjs';

const approveName = new RegExp(process.env.TAVU_WEB_APPROVE ?? 'allow|approve|yes|sign in', 'i');
const startMs = 40000;

/** Signs out first if somebody is signed in, so that the scenario can be repeated. */
export async function signedOut({ person, page }) {
  const code = person.button(/^(Get a code|Get a new code)$/);
  const settings = person.button('Settings');
  const waiting = page.getByText('Waiting for your approval…');
  await code.or(waiting).or(page.getByRole('main').getByRole('list')).first().waitFor();
  if ((await code.isVisible()) || (await waiting.first().isVisible())) return;
  await settings.click();
  await person.button('Sign out').click();
  await code.waitFor();
}

export async function signIn({ person, page, name }) {
  await person.heading(/^Sign in/).waitFor();
  await picture(page, `${name}-login`);
  const start = person.button(/^(Get a code|Get a new code)$/);
  if (await start.isVisible()) await start.click();
  const code = page.getByRole('img', { name: /^Code: / });
  await code.waitFor();
  await page.getByText('Waiting for your approval…').first().waitFor();
  const qr = page.getByRole('img', { name: /^QR code/ });
  await person.waitFor(() => qr.evaluate((image) => image.complete && image.naturalWidth > 0));
  await picture(page, `${name}-login-code`);

  const address = await page
    .getByRole('link', { name: 'Open the sign-in page' })
    .getAttribute('href');
  const service = await page.context().newPage();
  await service.goto(address);
  await service.getByRole('button', { name: approveName }).first().click();
  await code.waitFor({ state: 'detached', timeout: startMs });
  await service.close();
  await page.locator('.rows .row[data-at]').first().waitFor();
  await picture(page, `${name}-root`);
}

export async function browseAlbum({ person, page, trails, name }) {
  const title = trails.album.at(-1);
  await person.goHome();
  for (const folder of trails.album.slice(0, -1))
    await (await person.find(named('Open', folder))).click();
  await (await person.find(named('Open', title))).waitFor();
  await picture(page, `${name}-albums`);
  await person.row(named('Open', title)).click();
  await person.heading(title).waitFor();
  await person.row(/^Play /).waitFor();
  assert.equal(await person.button('Back').count(), 1);
}

export async function playTrack({ person, page, name }) {
  const row = person.row(/^Play /);
  const label = await row.getAttribute('aria-label');
  await row.click();
  await person.goTo('Now playing');
  await person.waitFor(async () => label.startsWith(`Play ${await person.nowTitle()}`), startMs);
  await person.waitFor(async () => (await person.position()) > 1000, startMs);
  await picture(page, `${name}-now`);
}

/** Pause holds the position, play goes on, a seek jumps. */
export async function pauseAndSeek({ person }) {
  const { now } = person;
  await now.getByRole('button', { name: 'Pause' }).click();
  await now.getByRole('button', { name: 'Play', exact: true }).waitFor();
  const held = await person.position();
  await now.getByRole('slider', { name: 'Position' }).press('ArrowRight');
  await person.waitFor(async () => (await person.position()) >= held + 4000);
  await now.getByRole('button', { name: 'Play', exact: true }).click();
  await now.getByRole('button', { name: 'Pause' }).waitFor();
  const after = await person.position();
  await person.waitFor(async () => (await person.position()) > after);
}

/**
 * At its start and held there, since "previous" begins a track anew that is well under way. The slider
 * shows the start before the player is there.
 */
async function previousFromStart(person) {
  const { now } = person;
  await now.getByRole('button', { name: 'Pause' }).click();
  await now.getByRole('button', { name: 'Play', exact: true }).waitFor();
  const home = () => now.getByRole('slider', { name: 'Position' }).press('Home');
  if ((await person.position()) > 0) await person.sends('player/seek', home);
  await person.waitFor(async () => (await person.position()) < 1000);
  await now.getByRole('button', { name: 'Previous track' }).click();
}

export async function playAlbumAndSkip({ person, page, trails, name }) {
  const title = trails.album.at(-1);
  await person.goTo('Browse');
  await person.heading(title).waitFor();
  const play = page.getByRole('main').getByRole('button', { name: `Play ${title}`, exact: true });
  await person.sends('play', () => play.first().click());
  await person.goTo('Now playing');
  const next = person.now.getByRole('button', { name: 'Next track' });
  await person.waitFor(async () => (await next.getAttribute('aria-disabled')) !== 'true', startMs);
  await person.waitFor(async () => (await person.position()) > 0, startMs);
  const first = await person.nowTitle();
  await next.click();
  await person.waitFor(async () => (await person.nowTitle()) !== first, startMs);
  await person.waitFor(async () => (await person.position()) > 0, startMs);
  await previousFromStart(person);
  await person.waitFor(async () => (await person.nowTitle()) === first, startMs);
  await person.goTo('Browse');
  await picture(page, `${name}-album`);
}

/** The thumb stays down, and what the service says is shown and kept to be read again. */
export async function rate({ person, page, name }) {
  await person.goTo('Now playing');
  const up = person.now.getByRole('button', { name: 'Thumbs up' });
  await person.waitFor(async () => (await up.getAttribute('aria-disabled')) !== 'true', startMs);
  await up.click();
  const said = () => document.querySelector('.toast strong')?.textContent;
  const words = await (await page.waitForFunction(said)).jsonValue();
  await person.waitFor(async () => (await up.getAttribute('aria-pressed')) === 'true');
  await picture(page, `${name}-rated`);
  await person.goTo('Messages');
  const messages = page.getByRole('region', { name: 'Messages' });
  await messages.getByRole('listitem').filter({ hasText: words }).first().waitFor();
  await picture(page, `${name}-messages`);
}

export async function followMore({ person, trails }) {
  await person.walk(trails.more);
  const more = person.button('See more results');
  await more.waitFor();
  const before = await person.rowCount();
  // A list that has been scrolled goes on by itself.
  await more.evaluate((button) => button.focus({ preventScroll: true }));
  await person.page.keyboard.press('Enter');
  await person.waitFor(async () => (await person.rowCount()) > before);
  const focused = () =>
    person.page.evaluate(() => Number(document.activeElement.closest('.row')?.dataset.at));
  await person.waitFor(async () => (await focused()) >= before); // on the first new row
}

export async function search({ person, page, trails, name }) {
  await person.goHome();
  const field = page.getByRole('searchbox');
  await page.keyboard.press('/');
  await person.waitFor(() => field.evaluate((input) => input === document.activeElement));
  await field.fill(trails.search);
  await field.press('Enter');
  await person.heading(`Results for “${trails.search}”`).waitFor();
  await (await person.find(new RegExp(`^(Open|Play) ${trails.search}`))).waitFor();
  await picture(page, `${name}-search`);
  assert.equal(await field.inputValue(), trails.search, 'the text is kept');
}

export async function playStation({ person, trails }) {
  await person.walk(trails.station, false);
  const row = await person.find(named('Play', trails.station.at(-1)));
  await row.click();
  await person.goTo('Now playing');
  await person.waitFor(async () => (await person.position()) > 0, startMs);
}

export async function stop({ person }) {
  await person.goTo('Now playing');
  const button = person.now.getByRole('button', { name: 'Stop' });
  await button.click();
  await person.waitFor(async () => (await button.getAttribute('aria-disabled')) === 'true');
}

export async function readErrorScreen({ person, page, trails, name }) {
  await person.walk(trails.error, false);
  await (await person.find(named('Open', trails.error.at(-1)))).click();
  const screen = page.getByRole('article');
  await screen.waitFor();
  const focused = () => page.evaluate(() => document.activeElement.tagName);
  await person.waitFor(async () => (await focused()) === 'H1');
  assert.ok((await screen.getByRole('button').or(screen.getByRole('link')).count()) > 0);
  await screen.getByText('Details').click();
  await screen.getByText('Time').waitFor();
  await picture(page, `${name}-error`);
  await page.keyboard.press('Escape');
  await screen.waitFor({ state: 'detached' });
  await person.row(named('Open', trails.error.at(-1))).waitFor();
}

/** Each button of a screen does what it says; what the service has to do is asked of it. */
export async function pressScreenButtons({ person, page, trails }) {
  const screen = page.getByRole('article');
  const title = named('Open', trails.ask.at(-1));
  await person.walk(trails.ask, false);
  for (const which of ['first', 'last']) {
    await (await person.find(title)).click();
    await screen.waitFor();
    await screen.getByRole('button')[which]().click();
    await screen.waitFor({ state: 'detached', timeout: startMs });
    await person.row(title).waitFor();
  }
}

/** In this order; each step leaves the page where the next one can begin. */
export const steps = [
  ['signs out, if somebody was signed in', signedOut],
  ['signs in with the code, without a reload', signIn],
  ['browses to an album', browseAlbum],
  ['plays a track', playTrack],
  ['pauses, seeks and goes on', pauseAndSeek],
  ['plays the album and goes to the next track and back', playAlbumAndSkip],
  ['rates a track', rate],
  ['follows "See more results"', followMore],
  ['searches', search],
  ['stops', stop],
  ['plays a station', playStation],
  ['reads an error screen and closes it', readErrorScreen],
  ['presses the buttons of a screen', pressScreenButtons],
];
