// One walk past every view, for checks that hold everywhere.
import { named, Person } from './person.mjs';

/** Calls `look(where)` with the page at rest in each view. The mock must be signed out at first. */
export async function tour({ mock, page, wide, look }) {
  const person = new Person(page, { wide });
  await person.button('Get a code').waitFor();
  await look('sign in');
  await person.button('Get a code').click();
  await page.getByRole('img', { name: /^Code/ }).waitFor();
  await look('sign in, code');
  mock.state.setLogin({ state: 'failed', message: 'The request was declined.' });
  await page.getByText('The request was declined.').waitFor();
  await look('sign in, failed');
  mock.state.approve();
  await person.row('Open Albums').waitFor();
  await look('root');

  await person.row('Open Albums').click();
  await person.row(named('Open', 'Harbour Lights')).waitFor();
  await look('covers');
  await person.row(named('Open', 'Cartography for Beginners and Other Long Titles')).click();
  await person.row(/^Play Ferry Road/).waitFor();
  mock.state.play({ kind: 'album', number: 15 });
  await page.waitForFunction(() => document.title.startsWith('Ferry Road'));
  await look('record, playing');
  await person.goTo('Now playing');
  await look('now playing');
  await person.button(/^Sound quality/).click();
  await page.getByRole('dialog', { name: 'The way of the sound' }).waitFor();
  await look('way of the sound');
  await page.keyboard.press('Escape');
  await person.button('Sleep timer').click();
  await page.getByRole('dialog', { name: 'Sleep timer' }).waitFor();
  await look('sleep timer');
  await page.keyboard.press('Escape');
  mock.state.step(1);
  mock.state.prepareNext();
  await person.goTo('Queue');
  await page.getByRole('button', { name: /^Skip to / }).waitFor();
  await look('queue');
  mock.state.step(-1);
  await page.goto(page.url().replace(/#.*/, '#/wall'));
  await page.getByRole('link', { name: 'Leave the wall screen' }).waitFor();
  await look('wall');
  await page.getByRole('link', { name: 'Leave the wall screen' }).click();
  await page.getByRole('button', { name: 'Settings' }).waitFor();
  await person.goTo('Now playing');
  mock.state.addMessage(
    'skipped',
    'Skipped “A title that goes on for quite a while before it ends”',
    'It is not part of your plan.',
  );
  mock.state.addMessage('error', 'The stream broke off', 'Try the next track.', [
    { type: 6, title: 'x' },
    { type: 106, title: 'Read on', link: 'https://service.test/x' },
  ]);
  await page.locator('.toast').first().waitFor();
  await look('notes');
  await person.goTo('Messages');
  await look('messages and notes');
  await person.goHome();
  await person.row('Open The whole archive').click();
  await person.row(/^Play Track number 1,/).waitFor();
  await look('long list');
  await person.goHome();
  await person.row('Open All tracks').click();
  await person.row(/^Play Track number 1,/).waitFor();
  await look('list with more results');
  await person.goHome();
  await person.row('Open New and noteworthy').click();
  await person.row('Open The Vault Session').click();
  await page.getByRole('article').waitFor();
  await page.getByText('Details').click();
  await look('message screen');
  await page.keyboard.press('Escape');
  await person.row(/^Play Members Only/).click();
  await page.getByRole('dialog').waitFor();
  await look('message dialog');
  await page.keyboard.press('Escape');
  await person.button('Ferry Road (More)').click();
  await page.getByRole('dialog', { name: 'Ferry Road' }).waitFor();
  await look('row menu');
  await page.keyboard.press('Escape');
  await page.getByRole('searchbox').fill('nothing of the kind');
  await page.keyboard.press('Enter');
  await page.getByText('Nothing found for').first().waitFor();
  await look('empty search');
  await person.button('Settings').click();
  await page.getByLabel('Living room DAC').waitFor();
  await look('settings');
  await page.keyboard.press('Escape');
  await person.goHome();
  mock.faults.failRows = 1;
  await person.row('Open Broken shelf').click();
  await person.button('Try again').waitFor();
  await look('failed list');
  mock.faults.refuseEvents = true;
  mock.dropStreams();
  await page.getByText('Lost the connection').waitFor();
  await look('connection lost');
}
