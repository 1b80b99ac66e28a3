// Each view against the mock, with the faults and turns that only a mock can play.
import assert from 'node:assert/strict';
import { describe, it } from 'node:test';

import { named } from './support/person.mjs';
import { asked, visit } from './support/view.mjs';

describe('signing in', () => {
  it('brings a new code by itself when the old one runs out', () =>
    visit({ signedIn: false }, async ({ mock, page, person }) => {
      mock.codeLives = [1];
      await person.button('Get a code').click();
      await page.getByRole('img', { name: 'Code: B C D F G H J K' }).waitFor();
      assert.equal(asked(mock, 'POST /api/v1/login/start'), 2);
    }));

  it('shows the code in groups, spells it out and copies it', () =>
    visit({ signedIn: false }, async ({ page, person }) => {
      await person.button('Get a code').click();
      const code = page.getByRole('img', { name: 'Code: Q R S T W X Y Z' });
      await code.waitFor();
      assert.deepEqual(await code.locator('span').allTextContents(), ['QRST', 'WXYZ']);
      await person.button('Copy the code').click();
      await page.getByText('Code copied').first().waitFor();
      assert.equal(await page.evaluate(() => navigator.clipboard.readText()), 'QRST-WXYZ');
    }));

  it('shows the address as text and link, and one to open with the code filled in', () =>
    visit({ signedIn: false }, async ({ mock, page, person }) => {
      await person.button('Get a code').click();
      const link = page.getByRole('link', { name: `${mock.url}/link`, exact: true });
      assert.equal(await link.getAttribute('href'), `${mock.url}/link`);
      const open = page.getByRole('link', { name: 'Open the sign-in page' });
      assert.equal(await open.getAttribute('href'), `${mock.url}/link?code=QRST-WXYZ`);
    }));

  it('shows an address that is none as text only', () =>
    visit({ signedIn: false }, async ({ mock, page }) => {
      mock.state.setLogin({
        state: 'waiting',
        userCode: 'AB',
        verificationUri: 'javascript:alert(1)',
        verificationUriComplete: 'javascript:alert(2)',
        expiresIn: 60,
      });
      await page.getByText('javascript:alert(1)').waitFor();
      assert.equal(await page.getByRole('main').getByRole('link').count(), 0);
    }));

  it('says why signing in failed and offers another code', () =>
    visit({ signedIn: false }, async ({ mock, page, person }) => {
      mock.state.setLogin({ state: 'failed', message: 'The request was declined.' });
      await page.getByRole('alert').getByText('The request was declined.').waitFor();
      await person.button('Get a new code').click();
      await page.getByRole('img', { name: /^Code/ }).waitFor();
    }));

  it('comes first wherever the address points', () =>
    visit(
      { signedIn: false, query: '/#/browse?path=%2FamazonMusic%2Fbrowse' },
      async ({ person }) => {
        await person.heading('Sign in to Amazon Music').waitFor();
      },
    ));

  it('asks for the access code of a player elsewhere, and keeps it out of the address', () =>
    visit({ token: 'secret' }, async ({ mock, page, person }) => {
      await page.addInitScript(() => {
        window.read = [];
        const note = () => window.read.push(document.querySelector('h1')?.textContent);
        new MutationObserver(note).observe(document, { childList: true, subtree: true });
      });
      await page.reload();
      const field = page.getByRole('textbox', { name: 'Access code' });
      await field.fill('wrong');
      await person.button('Connect').click();
      await page.getByText('did not accept').waitFor();
      await field.fill('secret');
      await person.button('Connect').click();
      await person.row('Open Albums').waitFor();
      const outOfReach = await page.evaluate(() => window.read.filter((text) => /reach/.test(text)));
      assert.deepEqual(outOfReach, [], 'it always was in reach');
      await page.goto(`${mock.url}/?token=secret`);
      await person.row('Open Albums').waitFor();
      assert.doesNotMatch(page.url(), /secret/);
    }));
});

/** Notes what moves on the page from now on; the function `moved` of its window tells it. */
const watchMoves = (page) =>
  page.evaluate(async () => {
    const painted = () =>
      new Promise((done) => {
        requestAnimationFrame(() => setTimeout(done));
      });
    for (let i = 0; i < 2; i += 1) await painted();
    const moves = [];
    const note = (entries) => {
      for (const { value, sources } of entries)
        moves.push({ value, what: sources.map(({ node }) => node?.outerHTML?.slice(0, 80)) });
    };
    const observer = new PerformanceObserver((list) => note(list.getEntries()));
    observer.observe({ type: 'layout-shift' });
    window.moved = async () => {
      for (let i = 0; i < 2; i += 1) await painted();
      note(observer.takeRecords());
      return moves;
    };
  });

describe('browsing', () => {
  it('asks for rows in windows as they come near', () =>
    visit({}, async ({ mock, page, person }) => {
      await person.row('Open The whole archive').click();
      await page.getByText('220 entries', { exact: true }).waitFor();
      await person.row(/^Play Track number 1,/).waitFor();
      assert.ok((await person.rowCount()) < 150, 'not all at once');
      await person.hasItsLetters();
      const height = () => page.evaluate(() => document.querySelector('.main').scrollHeight);
      const before = await height();
      await page.evaluate(() => {
        document.querySelector('.main').scrollTop = 1e6;
      });
      await person.row(/^Play Track number 220,/).waitFor();
      assert.equal(await height(), before, 'nothing moved when the rows came');
      const windows = asked(mock, 'GET /api/v1/rows');
      assert.ok(windows < 8, `${windows} requests`);
    }));

  it('keeps the place of what is to come in the shape that it will have', () =>
    visit({}, async ({ mock, page, person }) => {
      await person.row('Open Albums').click();
      await person.row(/^Open Harbour Lights/).waitFor();
      await person.hasItsLetters();
      const release = mock.hold();
      await person.row(/^Open Harbour Lights/).click();
      const places = page.locator('.rows[aria-hidden] .row');
      await places.first().waitFor();
      const before = (await places.first().boundingBox()).height;
      release();
      const first = page.locator('.rows .row[data-at]').first();
      await first.waitFor();
      assert.equal((await first.boundingBox()).height, before);
    }));

  it('numbers the entries for those who hear the list', () =>
    visit({}, async ({ page, person }) => {
      await person.row('Open The whole archive').click();
      const item = page.getByRole('listitem').filter({ hasText: 'Track number 7' }).first();
      assert.equal(await item.getAttribute('aria-posinset'), '7');
      assert.equal(await item.getAttribute('aria-setsize'), '220');
      await page
        .getByRole('status')
        .getByText('The whole archive, 220 entries')
        .waitFor({ state: 'attached' });
    }));

  it('follows "See more results" near the end once somebody scrolls', () =>
    visit({}, async ({ page, person }) => {
      await person.row('Open All tracks').click();
      await person.row(/^Play Track number 1,/).waitFor();
      await page.waitForTimeout(300);
      assert.equal(await person.rowCount(), 30, 'nothing by itself before');
      await page.mouse.move(400, 500);
      for (let i = 0; i < 3; i += 1) await page.mouse.wheel(0, 4000);
      await person.waitFor(async () => (await person.rowCount()) >= 60);
    }));

  it('has one button to open and one to play for an album, both with its name', () =>
    visit({}, async ({ page, person }) => {
      await person.row('Open Albums').click();
      const item = page.getByRole('listitem').filter({ hasText: 'Nachtfahrt' });
      await item.waitFor();
      const names = await item
        .getByRole('button')
        .evaluateAll((all) => all.map((b) => b.getAttribute('aria-label')));
      assert.deepEqual(names, [
        'Open Nachtfahrt, Ostkreuz Ensemble',
        'Play Nachtfahrt, Ostkreuz Ensemble',
      ]);
    }));

  it('shows artist and duration of a track, and says both', () =>
    visit({}, async ({ page, person }) => {
      await person.row('Open New and noteworthy').click();
      const item = page.getByRole('listitem').filter({ hasText: 'Ferry Road' });
      // Not innerText: that is empty while the row waits for its first paint.
      assert.match(await item.textContent(), /Ferry Road\s*Mira Lindqvist · Harbour Lights\s*1:35/);
      assert.equal(
        await item.getByRole('button').first().getAttribute('aria-label'),
        'Play Ferry Road, Mira Lindqvist · Harbour Lights, 1:35',
      );
    }));

  it('goes back to the same place with the focus on the row that was left', () =>
    visit({}, async ({ page, person }) => {
      await person.row('Open Albums').click();
      const row = person.row(named('Open', 'Half-Light'));
      await row.scrollIntoViewIfNeeded();
      await row.click();
      await person.heading('Half-Light').waitFor();
      await person.button('Back').click();
      await row.waitFor();
      await person.waitFor(() => row.evaluate((element) => element === document.activeElement));
      assert.ok((await page.evaluate(() => document.querySelector('.main').scrollTop)) > 0);
    }));

  it('leaves the focus to whoever writes, whatever comes to stand on the page', () =>
    visit({}, async ({ mock, page, person }) => {
      await person.row('Open Albums').click();
      await person.row(/^Open Nachtfahrt/).waitFor();
      const focused = await page.evaluate(async () => {
        const painted = () =>
          new Promise((done) => {
            requestAnimationFrame(() => setTimeout(done));
          });
        document.querySelector('a.brand').click();
        for (let i = 0; i < 10; i += 1) await Promise.resolve(); // the page shows the root by now
        document.activeElement.dispatchEvent(
          new KeyboardEvent('keydown', { key: '/', bubbles: true, cancelable: true }),
        );
        for (let i = 0; i < 10; i += 1) await painted();
        return [document.querySelector('h1').textContent, document.activeElement.id];
      });
      assert.deepEqual(focused, ['Amazon Music', 'search']);

      const release = mock.hold();
      await person.row('Open Artists').click();
      await page.keyboard.press('/');
      await page.keyboard.type('ab');
      release();
      await person.row('Open Tallgrass').waitFor();
      await page.keyboard.type('c');
      assert.equal(await page.getByRole('searchbox').inputValue(), 'abc');
    }));

  it('loses no letter of a search, however soon that is typed after a press', () =>
    visit({}, async ({ page, person }) => {
      await person.row('Open Albums').waitFor();
      const typed = await page.evaluate(async () => {
        document.querySelector('[aria-label="Open Albums"]').click();
        for (let i = 0; i < 10; i += 1) await Promise.resolve(); // the page shows the albums by now
        const field = document.getElementById('search');
        field.value = 'a';
        field.dispatchEvent(new InputEvent('input', { bubbles: true }));
        await new Promise((done) => {
          setTimeout(done, 300);
        });
        return field.value;
      });
      assert.equal(typed, 'a');
    }));

  it('shows a list seen before at once', () =>
    visit({}, async ({ mock, person }) => {
      await person.row('Open Albums').click();
      await person.row(/^Open Nachtfahrt/).click();
      await person.heading('Nachtfahrt').waitFor();
      mock.hold();
      await person.button('Back').click();
      await person.row(/^Open Nachtfahrt/).waitFor();
    }));

  it('shows where it is and leads up again', () =>
    visit({}, async ({ page, person }) => {
      await person.row('Open Artists').click();
      await person.row('Open Tallgrass').click();
      await person.row(/^Open Fieldnotes/).click();
      const trail = page.getByRole('navigation', { name: 'You are here' });
      await person.heading('Fieldnotes, Vol. 2').waitFor();
      assert.deepEqual(await trail.getByRole('link').allInnerTexts(), [
        'Home',
        'Artists',
        'Tallgrass',
      ]);
      await trail.getByRole('link', { name: 'Artists' }).click();
      await person.heading('Artists').waitFor();
    }));

  it('comes back to the same list after a reload', () =>
    visit({}, async ({ page, person }) => {
      await person.row('Open Albums').click();
      await person.row(/^Open Nachtfahrt/).click();
      await person.heading('Nachtfahrt').waitFor();
      await page.reload();
      await person.heading('Nachtfahrt').waitFor();
      await person.row(/^Play Ferry Road/).waitFor();
    }));

  it('shows placeholders at once while a list is slow, and moves nothing when it comes', () =>
    visit({}, async ({ mock, page, person }) => {
      await person.row('Open The whole archive').waitFor();
      await person.hasItsLetters();
      const release = mock.hold();
      await person.row('Open The whole archive').click();
      const gap = page.locator('.rows[aria-hidden] .row.gap').first();
      await gap.waitFor();
      await watchMoves(page);
      const place = await gap.boundingBox();
      release();
      await person.row(/^Play Track number 1,/).waitFor();
      const moves = await page.evaluate(() => window.moved());
      const much = moves.reduce((all, { value }) => all + value, 0);
      assert.ok(much < 0.01, JSON.stringify(moves));
      const first = page.locator('.rows .row[data-at]').first();
      assert.deepEqual(await first.boundingBox(), place);
    }));

  it('moves nothing while the page starts', () =>
    visit({}, async ({ page, person }) => {
      await page.route('**/*.woff2', (route) => route.abort()); // comes when it comes
      await page.addInitScript(() => {
        window.moved = [];
        new PerformanceObserver((list) => {
          for (const { sources } of list.getEntries())
            window.moved.push(...sources.map(({ node }) => node?.outerHTML ?? 'gone'));
        }).observe({ type: 'layout-shift', buffered: true });
      });
      await page.reload();
      await person.row('Open Albums').waitFor();
      await page.evaluate(() => new Promise((done) => requestAnimationFrame(() => setTimeout(done))));
      assert.deepEqual(await page.evaluate(() => window.moved), []);
    }));

  it("says what failed in the player's words and tries again", () =>
    visit({}, async ({ mock, page, person }) => {
      await person.row('Open Albums').waitFor();
      mock.faults.failRows = 1;
      await person.row('Open Albums').click();
      const notice = page
        .getByRole('alert')
        .filter({ hasText: 'Unable to browse in to the folder.' });
      await notice.waitFor();
      await notice.getByRole('button', { name: 'Try again' }).click();
      await person.row(/^Open Nachtfahrt/).waitFor();
    }));

  it('says so when a folder or a search is empty', () =>
    visit({}, async ({ page, person }) => {
      await person.row('Open Empty shelf').click();
      await page.getByText('There is nothing in here.').waitFor();
      await page.getByRole('searchbox').fill('zzz <b>');
      await page.keyboard.press('Enter');
      await page.getByText('Nothing found for “zzz <b>”.').waitFor();
    }));

  it('shows what a service says in place of rows, and counts nothing', () =>
    visit({}, async ({ page, person }) => {
      await person.row('Open Albums').waitFor();
      await page.getByRole('searchbox').fill('silence');
      await page.keyboard.press('Enter');
      await person.heading('Results for “silence”').waitFor();
      await page.getByText('Nothing was found for "silence".', { exact: true }).waitFor();
      const spoken = page.getByText('Results for “silence”, Nothing was found for "silence".');
      await spoken.waitFor({ state: 'attached' });
      assert.equal(await page.getByRole('main').locator('.rows').count(), 0);
      assert.equal((await page.locator('.heading-count').textContent()).trim(), '');
    }));

  it('asks again when the player says that rows have changed', () =>
    visit({}, async ({ mock, person }) => {
      await person.row('Open Albums').waitFor();
      const before = asked(mock, 'GET /api/v1/rows');
      mock.emit('rows', { path: '/amazonMusic/browse' });
      await person.waitFor(() => asked(mock, 'GET /api/v1/rows') === before + 1);
      await person.row('Open Albums').waitFor();
    }));
});

describe('the menu of a row', () => {
  it('rates a track and gives the focus back', () =>
    visit({}, async ({ mock, page, person }) => {
      await person.row('Open New and noteworthy').click();
      const more = person.button('Ferry Road (More)');
      await more.click();
      const menu = page.getByRole('dialog', { name: 'Ferry Road' });
      await menu.getByRole('button', { name: 'Thumbs up' }).click();
      await page.locator('.toast').getByText('Thanks. We will play more like this.').waitFor();
      assert.deepEqual(mock.ratings, [{ path: '/amazonMusic/rate?url=x', value: true }]);
      assert.equal(await menu.count(), 0);
      await person.waitFor(() => more.evaluate((element) => element === document.activeElement));
    }));

  it('is there only where there is something in it', () =>
    visit({}, async ({ person }) => {
      await person.row('Open Stations').click();
      await person.row(/^Play Coastal folk/).waitFor();
      assert.equal(await person.button(/\(More\)$/).count(), 0);
    }));
});

describe('messages of the service', () => {
  it('show in front when playing fails, with the buttons in order, and give the focus back', () =>
    visit({}, async ({ page, person }) => {
      await person.row('Open New and noteworthy').click();
      const row = person.row(/^Play Members Only/);
      await row.click();
      const dialog = page.getByRole('dialog');
      await dialog
        .getByRole('heading', { name: 'Your plan does not include this track' })
        .waitFor();
      await person.waitFor(() => page.evaluate(() => document.activeElement.tagName === 'H2'));
      const offered = await dialog.locator('.screen-buttons > *').allInnerTexts();
      assert.deepEqual(
        offered.map((text) => text.trim()),
        ['See the plans', 'Not now'],
      );
      assert.equal(await dialog.getByRole('link').getAttribute('rel'), 'noopener noreferrer');
      assert.equal(await page.locator('.toast').count(), 0, 'not told a second time');
      await dialog.getByText('Details').click();
      await dialog.getByText('Request').waitFor();
      assert.match(
        await dialog.locator('dl').innerText(),
        /^Time\n.+\nCode\n409\nRequest\n[0-9a-f-]{36}$/,
      );
      await page.keyboard.press('Escape');
      await dialog.waitFor({ state: 'detached' });
      await person.waitFor(() => row.evaluate((element) => element === document.activeElement));
      await person.goTo('Messages');
      await page.getByRole('region', { name: 'Messages' }).getByText('Playback failed').waitFor();
    }));

  it('close by their own button', () =>
    visit({}, async ({ mock, page, person }) => {
      await person.row('Open New and noteworthy').click();
      await person.row(/^Play Members Only/).click();
      await page.getByRole('dialog').getByRole('button', { name: 'Not now' }).click();
      await page.getByRole('dialog').waitFor({ state: 'detached' });
      assert.equal(asked(mock, 'POST /api/v1/rows/activate'), 1);
    }));

  it("stand in the list's place when a folder is one, and post what their button says", () =>
    visit({}, async ({ mock, page, person }) => {
      await person.row('Open New and noteworthy').click();
      await person.row('Open The Vault Session').click();
      await person.heading('This track is not available where you are').waitFor();
      await person.button('Tell me when it is').click();
      await person.row('Open The Vault Session').waitFor();
      assert.equal(asked(mock, 'POST /api/v1/rows/activate'), 1);
      assert.equal(await page.getByRole('article').count(), 0);
    }));

  it("keep a failed button's reason beside it", () =>
    visit({}, async ({ mock, page, person }) => {
      await person.row('Open New and noteworthy').click();
      await person.row(/^Play Members Only/).click();
      const dialog = page.getByRole('dialog');
      await dialog.waitFor();
      mock.refs.clear();
      await dialog.getByRole('button', { name: 'Not now' }).click();
      await dialog.getByRole('alert').getByText('This row is no longer known.').waitFor();
    }));

  it('pass by and stay in the list to be copied', () =>
    visit({}, async ({ mock, page, person }) => {
      await person.row('Open Albums').waitFor();
      mock.state.addMessage('skipped', 'Skipped “Gulls”', 'It is not part of your plan.');
      await page.locator('.toast').getByText('Skipped “Gulls”').waitFor();
      await person.button('Close the note “Skipped “Gulls””').click();
      await page.locator('.toast').waitFor({ state: 'detached' });
      await person.goTo('Messages');
      await person.button('Copy the message “Skipped “Gulls””').click();
      await page.getByText('Copied').first().waitFor();
      assert.match(
        await page.evaluate(() => navigator.clipboard.readText()),
        /Skipped “Gulls”\nIt is not part of your plan\./,
      );
    }));

  it('count as unread on a narrow page until their place is opened', () =>
    visit({ wide: false }, async ({ mock, page, person }) => {
      await person.row('Open Albums').waitFor();
      mock.state.addMessage('error', 'One', '');
      mock.state.addMessage('error', 'Two', '');
      await page.getByRole('link', { name: /^Messages.*2 unread$/ }).click();
      await page.getByRole('link', { name: 'Messages', exact: true }).waitFor();
      assert.deepEqual(await page.locator('.message-title').allInnerTexts(), ['Two', 'One']);
    }));

  it('lay no note on top of their own list', () =>
    visit({ wide: false }, async ({ mock, page, person }) => {
      await person.row('Open Albums').waitFor();
      mock.state.addMessage('error', 'One', '');
      await page.locator('.toast').waitFor();
      await person.goTo('Messages');
      await page.locator('.toast').waitFor({ state: 'detached' });
      mock.state.addMessage('skipped', 'Two', '');
      await page.getByRole('listitem').filter({ hasText: 'Two' }).waitFor();
      await page.getByRole('status').getByText('Two').waitFor({ state: 'attached' });
      assert.equal(await page.locator('.toast').count(), 0);
      await person.goTo('Browse');
      await person.row('Open Albums').waitFor();
      assert.equal(await page.locator('.toast').count(), 0);
    }));

  it("offer the service's buttons in the list too", () =>
    visit({}, async ({ mock, page, person }) => {
      await person.row('Open Albums').waitFor();
      mock.state.addMessage('error', 'Ask', 'Text', [
        { type: 6, title: 'Ask' },
        { type: 106, title: 'Read on', link: 'https://service.test/x' },
        { type: 106, title: 'Evil', link: 'javascript:alert(1)' },
      ]);
      await page.getByRole('tab', { name: /^Messages.*1 unread$/ }).waitFor();
      await person.goTo('Messages');
      await page.getByRole('tab', { name: 'Messages', exact: true }).waitFor();
      const message = page.getByRole('region', { name: 'Messages' });
      await message.getByRole('link', { name: 'Read on (opens in a new tab)' }).waitFor();
      assert.equal(await message.getByText('Evil').count(), 0);
    }));
});

describe('a lost connection', () => {
  it('shows, rests the controls, and ends with the full state', () =>
    visit({}, async ({ mock, page, person }) => {
      await person.row('Open Albums').waitFor();
      mock.faults.refuseEvents = true;
      mock.dropStreams();
      const banner = page.getByRole('alert').getByText('Lost the connection to the player.');
      await banner.waitFor();
      const mute = person.now.getByRole('button', { name: 'Mute' });
      assert.equal(await mute.getAttribute('aria-disabled'), 'true');
      assert.equal(await mute.getAttribute('title'), 'Not connected to the player');
      assert.equal(await person.row('Open Albums').getAttribute('aria-disabled'), 'true');

      Object.assign(mock.state, { volume: 11 });
      mock.state.play({ kind: 'album', number: 2 });
      mock.faults.refuseEvents = false;
      await banner.waitFor({ state: 'detached' });
      await person.waitFor(async () => (await person.nowTitle()) === 'Ferry Road');
      assert.equal(await person.now.getByRole('slider', { name: 'Volume' }).inputValue(), '11');
      assert.equal(await mute.getAttribute('aria-disabled'), null);
    }));

  it('keeps the focus where it was', () =>
    visit({}, async ({ mock, page, person }) => {
      const row = person.row('Open Albums');
      await row.focus();
      mock.faults.refuseEvents = true;
      mock.dropStreams();
      await page.getByText('Lost the connection').waitFor();
      assert.equal(await row.evaluate((element) => element === document.activeElement), true);
      mock.faults.refuseEvents = false;
      await page.getByText('Lost the connection').waitFor({ state: 'detached' });
      assert.equal(await row.evaluate((element) => element === document.activeElement), true);
    }));
});
