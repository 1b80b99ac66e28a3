// What plays, and the controls of it, against the mock.
import assert from 'node:assert/strict';
import { describe, it } from 'node:test';

import { visit } from './support/view.mjs';

describe('the player', () => {
  const playAlbum = async ({ mock, person }) => {
    await person.row('Open Albums').waitFor();
    mock.state.play({ kind: 'album', number: 0 });
    await person.now.getByRole('button', { name: 'Pause' }).waitFor();
  };

  it('offers the play modes that are supported, and no others', () =>
    visit({}, async (scene) => {
      await playAlbum(scene);
      const { mock, person } = scene;
      const repeat = person.now.getByRole('button', { name: /^Repeat/ });
      const says = (name) =>
        person.waitFor(async () => (await repeat.getAttribute('aria-label')) === name);
      for (const name of ['Repeat: off', 'Repeat: all tracks', 'Repeat: this track']) {
        await says(name);
        await repeat.click();
      }
      await says('Repeat: off');
      const shuffle = person.now.getByRole('button', { name: 'Shuffle' });
      await shuffle.click();
      await person.waitFor(async () => (await shuffle.getAttribute('aria-pressed')) === 'true');
      mock.state.play({ kind: 'station', number: 30 });
      await shuffle.waitFor({ state: 'detached' });
      assert.equal(await repeat.count(), 0);
    }));

  it('loses no press on the modes, however quickly they follow each other', () =>
    visit({}, async (scene) => {
      await playAlbum(scene);
      const { mock, person } = scene;
      const repeat = person.now.getByRole('button', { name: /^Repeat/ });
      const shuffle = person.now.getByRole('button', { name: 'Shuffle' });
      const release = mock.hold();
      await repeat.click();
      await shuffle.click();
      release();
      await person.waitFor(() => mock.state.mode === 5); // all tracks, shuffled
      await person.now.getByRole('button', { name: 'Repeat: all tracks' }).waitFor();
      await person.waitFor(async () => (await shuffle.getAttribute('aria-pressed')) === 'true');
    }));

  it('keeps the volume where the hand has put it until the player has answered', () =>
    visit({}, async (scene) => {
      await playAlbum(scene);
      const { mock, page, person } = scene;
      const volume = person.now.getByRole('slider', { name: 'Volume' });
      const release = mock.hold();
      await volume.fill('20');
      mock.state.addMessage('info', 'Meanwhile', '');
      mock.state.told(); // with the volume from before the hand
      mock.state.addMessage('info', 'That came through', '');
      await page.locator('.toast').getByText('That came through').waitFor();
      assert.equal(await volume.inputValue(), '20');
      release();
      await person.waitFor(() => mock.state.volume === 20);
      mock.state.volume = 70;
      mock.state.told();
      await person.waitFor(async () => (await volume.inputValue()) === '70');
    }));

  it('seeks by hand and by keys, and does not jump back meanwhile', () =>
    visit({}, async (scene) => {
      await playAlbum(scene);
      const { mock, person } = scene;
      const slider = person.now.getByRole('slider', { name: 'Position' });
      await person.now.getByRole('button', { name: 'Pause' }).click(); // so that nothing runs on
      await person.now.getByRole('button', { name: 'Play', exact: true }).waitFor();
      await slider.fill('60000');
      await person.waitFor(() => mock.state.position() >= 60000);
      assert.ok((await person.position()) >= 59000);
      await slider.press('ArrowLeft');
      await person.waitFor(() => mock.state.position() < 58000);
      const said = async () => /^5\d s of 1 min 35 s$/.test(await slider.getAttribute('aria-valuetext'));
      await person.waitFor(said);
    }));

  it('rests the seek slider where the player cannot seek', () =>
    visit({}, async ({ mock, person }) => {
      await person.row('Open Albums').waitFor();
      mock.state.play({ kind: 'station', number: 30 });
      await person.now.getByRole('button', { name: 'Pause' }).waitFor();
      assert.equal(await person.now.getByRole('slider', { name: 'Position' }).isDisabled(), true);
    }));

  it('sets volume and mute', () =>
    visit({}, async ({ mock, person }) => {
      await person.row('Open Albums').waitFor();
      await person.now.getByRole('slider', { name: 'Volume' }).fill('20');
      await person.waitFor(() => mock.state.volume === 20);
      const mute = person.now.getByRole('button', { name: 'Mute' });
      await mute.click();
      await person.waitFor(
        async () => mock.state.mute && (await mute.getAttribute('aria-pressed')) === 'true',
      );
    }));

  it('rates the track and shows what the service says to it', () =>
    visit({}, async (scene) => {
      await playAlbum(scene);
      const { mock, page, person } = scene;
      const up = person.now.getByRole('button', { name: 'Thumbs up' });
      await up.click();
      await page.locator('.toast').getByText('Thanks. We will play more like this.').waitFor();
      await person.waitFor(async () => (await up.getAttribute('aria-pressed')) === 'true');
      await person.now.getByRole('button', { name: 'Next track' }).click();
      await person.waitFor(async () => (await up.getAttribute('aria-pressed')) === 'false');
      mock.state.moveTo(0, 3); // held there: "previous" begins a track anew that is well under way
      await person.now.getByRole('button', { name: 'Previous track' }).click();
      await person.waitFor(async () => (await up.getAttribute('aria-pressed')) === 'true');
      await person.now.getByRole('button', { name: 'Thumbs down' }).click();
      await person.waitFor(async () => (await up.getAttribute('aria-pressed')) === 'false');
    }));

  it("says the new title once, politely, and in the window's title", () =>
    visit({}, async (scene) => {
      await playAlbum(scene);
      const { page } = scene;
      await page
        .getByRole('status')
        .getByText('Now playing: Ferry Road by Mira Lindqvist')
        .waitFor({ state: 'attached' });
      await page.waitForFunction(() => document.title === 'Ferry Road · Tavu');
    }));

  it('shows an error of the player where it plays', () =>
    visit({}, async ({ mock, person }) => {
      await person.row('Open Albums').waitFor();
      mock.state.error = { title: 'The stream broke off.', detail: 'Try the next track.' };
      mock.state.told();
      await person.now.getByText('The stream broke off.').waitFor();
    }));

  it('is steered by single keys, which can be switched off', () =>
    visit({}, async (scene) => {
      await playAlbum(scene);
      const { page, person } = scene;
      await page.keyboard.press('p');
      await person.now.getByRole('button', { name: 'Play', exact: true }).waitFor();
      await person.button('Settings').click();
      await page.getByLabel('Use single-key shortcuts').uncheck();
      await page.keyboard.press('Escape');
      await page.getByRole('dialog').waitFor({ state: 'detached' });
      await page.keyboard.press('p');
      await page.keyboard.press('/');
      await page.waitForTimeout(300);
      assert.equal(await person.now.getByRole('button', { name: 'Play', exact: true }).count(), 1);
      assert.notEqual(await page.evaluate(() => document.activeElement.id), 'search');
    }));

  it('changes the sound output', () =>
    visit({}, async ({ mock, page, person }) => {
      await person.button('Settings').click();
      await page.getByLabel('Living room DAC').check();
      await person.waitFor(() => mock.state.outputs[1].selected);
      await person.waitFor(() => page.getByLabel('Living room DAC').isChecked());
    }));

  it('marks the row that plays', () =>
    visit({}, async (scene) => {
      await playAlbum(scene);
      const { person } = scene;
      await person.row('Open Albums').click();
      await person.row(/^Open Harbour/).click();
      const row = person.row(/^Play Ferry Road/);
      await person.waitFor(async () => (await row.getAttribute('aria-current')) === 'true');
    }));
});

describe('a screen on the wall', () => {
  it('shows what plays and nothing else, reached and left by its address', () =>
    visit({ query: '/#/wall' }, async ({ mock, page, person }) => {
      mock.state.play({ kind: 'album', number: 0 });
      await person.heading('Ferry Road').waitFor();
      assert.equal(await page.getByRole('searchbox').count(), 0);
      const main = person.now.getByRole('button', { name: 'Pause' });
      await main.waitFor();
      assert.ok((await main.boundingBox()).width >= 96, 'a target for a whole hand');
      await main.click();
      await person.waitFor(() => mock.state.state === 3);
      await page.getByRole('link', { name: 'Leave the wall screen' }).click();
      await page.getByRole('searchbox').waitFor();
      await person.button('Settings').click();
      await person.button('Show on a wall screen').click();
      await page.getByRole('searchbox').waitFor({ state: 'detached' });
      assert.match(page.url(), /#\/wall$/);
    }));
});
