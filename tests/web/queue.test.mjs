// What has played, what plays and what follows; and what the sound is.
import assert from 'node:assert/strict';
import { describe, it } from 'node:test';

import { assertAccessible } from './support/axe.mjs';
import { picture } from './support/person.mjs';
import { asked, visit } from './support/view.mjs';

const station = { title: 'Coastal folk', type: 3, audioType: 2 };
const record = { title: 'Harbour Lights', type: 1, containerPlayable: true };

const queueOf = (page) => page.getByRole('region', { name: 'Queue' });
const from = (page) => queueOf(page).locator('strong').first().textContent();
const titles = (page) => queueOf(page).locator('.row-title').allTextContents();
const current = (page) => queueOf(page).locator('[aria-current] .row-title').textContent();

/** Plays the first tracks of a record, one after the other. */
function playOn(mock, tracks) {
  mock.state.play({ kind: 'album', number: 0 }, record);
  for (let i = 1; i < tracks; i += 1) mock.state.step(1);
}

for (const wide of [false, true]) {
  describe(`the queue on a ${wide ? 'wide' : 'narrow'} page`, () => {
    it('shows what played, what plays, and what follows once that is prepared', () =>
      visit({ wide }, async ({ mock, page, person }) => {
        await person.row('Open Albums').waitFor();
        playOn(mock, 3);
        await person.goTo('Queue');
        await queueOf(page).getByText('Tin Roof').waitFor();
        assert.deepEqual(await titles(page), ['Ferry Road', 'First Light', 'Tin Roof']);
        assert.equal(await queueOf(page).locator('[aria-current]').count(), 1);
        await queueOf(page).getByText('What comes next shows here').waitFor();
        mock.state.prepareNext();
        const next = queueOf(page).getByRole('button', { name: /^Skip to Letters Home/ });
        await next.waitFor();
        await assertAccessible(page, 'queue');
        await picture(page, `view-queue-${wide ? 'wide' : 'narrow'}`);
        await person.brings(() => next.click(), () => mock.state.track.title === 'Letters Home');
        await person.waitFor(async () => (await current(page)) === 'Letters Home');
      }));

    it('plays again what has played', () =>
      visit({ wide }, async ({ mock, page, person }) => {
        await person.row('Open Albums').waitFor();
        playOn(mock, 3);
        await person.goTo('Queue');
        const again = queueOf(page).getByRole('button', { name: /^Play again: First Light/ });
        await person.brings(() => again.click(), () => mock.state.track.title === 'First Light');
        await person.waitFor(async () => (await current(page)) === 'First Light');
      }));
  });
}

describe('the queue', () => {
  it('folds a long past away, and unfolds it where it was folded', () =>
    visit({}, async ({ mock, page, person }) => {
      await person.row('Open Albums').waitFor();
      playOn(mock, 9);
      const more = queueOf(page).getByRole('button', { name: 'Show 4 earlier' });
      await more.click();
      await person.waitFor(async () => (await titles(page)).length === 9);
      assert.equal(await more.count(), 0);
      const focused = () => page.evaluate(() => document.activeElement.getAttribute('aria-label'));
      await person.waitFor(async () => /^Play again: Ferry Road/.test(await focused()));
    }));

  it('says where the music comes from, and that a station does not end', () =>
    visit({}, async ({ mock, page, person }) => {
      await person.row('Open Albums').waitFor();
      mock.state.play({ kind: 'station', number: 0, title: 'Coastal folk' }, station);
      await queueOf(page).getByText('Coastal folk').waitFor();
      await queueOf(page).getByText('Endless station').waitFor();
      mock.state.play({ kind: 'album', number: 0 }, record);
      await queueOf(page).getByText('Endless station').waitFor({ state: 'detached' });
      assert.equal(await from(page), 'Harbour Lights');
    }));

  it('says that each track comes once, while what plays is shuffled', () =>
    visit({}, async ({ mock, page, person }) => {
      await person.row('Open Albums').waitFor();
      mock.state.play({ kind: 'album', number: 0 }, record);
      await person.waitFor(async () => (await from(page)) === 'Harbour Lights');
      const each = queueOf(page).getByText('each track once');
      assert.equal(await each.count(), 0);
      await person.now.getByRole('button', { name: 'Shuffle' }).click();
      await each.waitFor();
    }));

  it('is empty in words, and full again after the connection was lost', () =>
    visit({}, async ({ mock, page, person }) => {
      await queueOf(page).getByText('Nothing has played yet').waitFor();
      mock.faults.refuseEvents = true;
      mock.dropStreams();
      await page.getByText('Lost the connection').waitFor();
      playOn(mock, 2);
      mock.faults.refuseEvents = false;
      await queueOf(page).getByText('First Light').waitFor();
    }));

  it('is asked for once a change, and shares its place with the messages', () =>
    visit({}, async ({ mock, page, person }) => {
      await queueOf(page).getByText('Nothing has played yet').waitFor();
      const before = asked(mock, 'GET /api/v1/queue');
      mock.state.prepareNext();
      await person.waitFor(() => asked(mock, 'GET /api/v1/queue') === before + 1);
      await page.getByRole('tab', { name: 'Queue' }).focus();
      await page.keyboard.press('ArrowRight');
      await page.getByRole('region', { name: 'Messages' }).waitFor();
      await page.keyboard.press('ArrowRight');
      await queueOf(page).waitFor();
    }));
});

describe('the sound', () => {
  it('is named in a label that opens its way', () =>
    visit({}, async ({ mock, page, person }) => {
      await person.row('Open Albums').waitFor();
      mock.state.play({ kind: 'album', number: 0 }, record);
      const label = person.now.getByRole('button', { name: /^Sound quality: FLAC/ });
      await label.click();
      const way = page.getByRole('dialog', { name: 'The way of the sound' });
      await way.getByText('Converted from 44.1 kHz to 48 kHz').waitFor();
      assert.deepEqual(await way.locator('.stage-name').allTextContents(),
        ['From the service', 'Decoder', 'Volume', 'Output']);
      await assertAccessible(page, 'way of the sound');
      await picture(page, 'view-way-of-the-sound');
      await page.keyboard.press('Escape');
      await way.waitFor({ state: 'detached' });
      const focused = () => page.evaluate(() => document.activeElement.ariaLabel);
      await person.waitFor(async () => /^Sound quality/.test(await focused()));
    }));

  it('keeps its label, and the focus on it, from track to track', () =>
    visit({}, async ({ mock, page, person }) => {
      await person.row('Open Albums').waitFor();
      mock.state.play({ kind: 'album', number: 0 }, record);
      const label = (what) => person.now.getByRole('button', { name: `Sound quality: ${what}` });
      await label('FLAC').focus();
      mock.state.play({ kind: 'station', number: 0 }, station);
      clearTimeout(mock.state.starting);
      await label('not known yet').waitFor();
      mock.state.moveTo(0, 2);
      await label('MP3').waitFor();
      const focused = () => page.evaluate(() => document.activeElement.ariaLabel);
      await person.waitFor(async () => /^Sound quality/.test(await focused()));
    }));

  it('keeps its place when nothing is known of it', () =>
    visit({}, async ({ mock, person }) => {
      await person.row('Open Albums').waitFor();
      await person.hasItsLetters();
      const top = () => person.now.getByRole('slider', { name: 'Position' }).boundingBox();
      const before = await top();
      mock.state.play({ kind: 'album', number: 0 }, record);
      await person.now.getByRole('button', { name: /^Sound quality: FLAC/ }).waitFor();
      assert.equal((await top()).y, before.y);
      mock.state.stop();
      await person.now.getByRole('button', { name: /^Sound quality/ }).waitFor({ state: 'detached' });
      assert.equal((await top()).y, before.y);
    }));
});

describe('signed out', () => {
  it('says why, where one signs in again', () =>
    visit({}, async ({ mock, page, person }) => {
      await person.row('Open Albums').waitFor();
      const why = 'The service has ended the login. Sign in again.';
      mock.state.setLogin({ state: 'loggedOut', message: why });
      const alert = page.getByRole('alert').filter({ hasText: why });
      await alert.getByText('Please sign in again').waitFor();
      await assertAccessible(page, 'signed out');
      await person.button('Get a code').click();
      await page.getByRole('img', { name: /^Code/ }).waitFor();
      assert.equal(await page.getByText(why).count(), 0);
    }));
});

describe('a command that is not answered', () => {
  it('shows that it is busy until the answer comes, and can be pressed again', () =>
    visit({}, async ({ mock, page, person }) => {
      await person.row('Open Albums').waitFor();
      mock.state.play({ kind: 'album', number: 0 }, record);
      const next = person.now.getByRole('button', { name: 'Next track' });
      await person.waitFor(async () => (await next.getAttribute('aria-disabled')) === null);
      const release = mock.hold();
      await next.click();
      await person.waitFor(async () => (await next.getAttribute('aria-busy')) === 'true');
      const ring = () => next.evaluate((button) => getComputedStyle(button, '::after').opacity);
      await person.waitFor(async () => (await ring()) === '1');
      await next.click();
      release();
      await person.waitFor(async () => (await next.getAttribute('aria-busy')) === null);
      await person.waitFor(async () => (await person.nowTitle()) === 'Tin Roof');
      assert.equal(asked(mock, 'POST /api/v1/player/next'), 2);
    }));
});

describe('a button of the service that is not answered', () => {
  /** Lets activations wait until what is returned is called. */
  function heldAnswer(mock) {
    let answer;
    const called = new Promise((done) => {
      answer = done;
    });
    const original = mock.activate;
    mock.activate = async (...args) => {
      await called;
      original.apply(mock, args);
    };
    return answer;
  }

  const refuse = async ({ mock, page, person }) => {
    await person.row('Open New and noteworthy').click();
    await person.row(/^Play Members Only/).click();
    const dialog = page.getByRole('dialog');
    await dialog.getByRole('button', { name: 'Not now' }).waitFor();
    return { dialog, release: mock.hold() };
  };

  it('says at once that it works, keeps the focus, and ends in the words of the player', () =>
    visit({}, async ({ mock, page, person }) => {
      const { dialog, release } = await refuse({ mock, page, person });
      mock.faults.failActivate = 'No answer from service';
      await dialog.getByRole('button', { name: 'Not now' }).click();
      const working = dialog.getByRole('button', { name: 'Working…' });
      await working.waitFor();
      assert.equal(await working.getAttribute('aria-disabled'), 'true');
      const focused = () => page.evaluate(() => document.activeElement.innerText.trim());
      await person.waitFor(async () => (await focused()) === 'Working…');
      release();
      await dialog.getByRole('alert').getByText('No answer from service').waitFor();
      await person.waitFor(async () => (await focused()) === 'Not now');
    }));

  it('leads nobody away who has gone elsewhere meanwhile', () =>
    visit({}, async ({ mock, page, person }) => {
      await person.row('Open New and noteworthy').click();
      await person.row('Open The Vault Session').click();
      const action = page.getByRole('article').getByRole('button', { name: 'Close' });
      await action.waitFor();
      const before = asked(mock, 'POST /api/v1/rows/activate');
      const answer = heldAnswer(mock);
      await action.click();
      await person.waitFor(() => asked(mock, 'POST /api/v1/rows/activate') === before + 1);
      await person.goHome();
      await person.row('Open Albums').click();
      await person.heading('Albums').waitFor();
      const answered = page.waitForResponse(/rows\/activate$/);
      answer();
      await (await answered).finished();
      await person.row(/^Open Harbour Lights/).waitFor();
      await page.evaluate(() => new Promise((done) => setTimeout(done)));
      assert.equal(await person.heading('Albums').count(), 1);
    }));

  it('can be left, and its failure is told all the same', () =>
    visit({}, async ({ mock, page, person }) => {
      const { dialog, release } = await refuse({ mock, page, person });
      mock.faults.failActivate = 'No answer from service';
      await dialog.getByRole('button', { name: 'Not now' }).click();
      await dialog.getByRole('button', { name: 'Close' }).click();
      await dialog.waitFor({ state: 'detached' });
      release();
      await page.locator('.toast').getByText('No answer from service').waitFor();
    }));
});
