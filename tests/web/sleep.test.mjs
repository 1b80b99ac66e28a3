// The sleep timer: set, told, and called off.
import assert from 'node:assert/strict';
import { describe, it } from 'node:test';

import { assertAccessible } from './support/axe.mjs';
import { picture } from './support/person.mjs';
import { visit } from './support/view.mjs';

for (const wide of [false, true]) {
  describe(`the sleep timer on a ${wide ? 'wide' : 'narrow'} page`, () => {
    it('is set in two presses, tells what is left, and is called off', () =>
      visit({ wide }, async ({ mock, page, person }) => {
        await person.row('Open Albums').waitFor();
        mock.state.play({ kind: 'album', number: 0 });
        await person.goTo('Now playing');
        await person.now.getByRole('button', { name: 'Sleep timer', exact: true }).click();
        const dialog = page.getByRole('dialog', { name: 'Sleep timer' });
        await dialog.getByRole('button', { name: '30 minutes' }).waitFor();
        await assertAccessible(page, 'sleep timer');
        await picture(page, `view-sleep-${wide ? 'wide' : 'narrow'}`);
        await dialog.getByRole('button', { name: '30 minutes' }).click();
        await dialog.waitFor({ state: 'detached' });
        const left = person.now.getByRole('button', { name: 'Sleep timer: 30 min left' });
        await left.waitFor();
        assert.equal(mock.state.sleep.finishTrack, true);
        await person.waitFor(() => left.evaluate((button) => button === document.activeElement));
        await left.click();
        await dialog.getByRole('button', { name: 'Switch the timer off' }).click();
        await person.now.getByRole('button', { name: 'Sleep timer', exact: true }).waitFor();
        assert.equal(mock.state.sleep, null);
      }));
  });
}

it('does not wait for the end of the track when told not to', () =>
  visit({}, async ({ mock, page, person }) => {
    await person.row('Open Albums').waitFor();
    const sleep = person.now.getByRole('button', { name: 'Sleep timer', exact: true });
    assert.equal(await sleep.count(), 0, 'there is nothing to end');
    mock.state.play({ kind: 'album', number: 0 });
    await sleep.click();
    await page.getByLabel('Let the last track end first').uncheck();
    await page.getByRole('button', { name: '15 minutes' }).click();
    await person.waitFor(() => mock.state.sleep?.finishTrack === false);
  }));
