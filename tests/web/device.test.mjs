// The page as a part of the reader's device: its lock screen and media keys, its home screen, and
// what it shows when the player is out of reach.
import assert from 'node:assert/strict';
import { after, before, describe, it } from 'node:test';

import { startMock } from './mockplayer.mjs';
import { assertAccessible } from './support/axe.mjs';
import { assertNoFaults, launch, openPage, visit as visitPage } from './support/browser.mjs';
import { Person, picture } from './support/person.mjs';

let browser;
before(async () => {
  browser = await launch();
});
after(() => browser.close());

const visit = (work) =>
  visitPage(browser, { prepare: (mock) => mock.state.approve() }, ({ mock, page }) =>
    work({ mock, page, person: new Person(page, { wide: true }) }),
  );

describe('the lock screen', () => {
  /** Keeps the handlers that the page gives to the browser where a test can press them. */
  const keepHandlers = () => {
    window.keys = {};
    window.positions = [];
    const { prototype } = MediaSession;
    const { setActionHandler, setPositionState } = prototype;
    prototype.setActionHandler = function set(name, handler) {
      window.keys[name] = handler;
      return setActionHandler.call(this, name, handler);
    };
    prototype.setPositionState = function set(state) {
      window.positions.push(state);
      return setPositionState.call(this, state);
    };
  };
  const press = (page, name, details = {}) =>
    page.evaluate(([key, more]) => window.keys[key]({ action: key, ...more }), [name, details]);

  it('shows what plays and steers it by every key', () =>
    visit(async ({ mock, page, person }) => {
      await page.addInitScript(keepHandlers);
      await page.reload();
      await person.row('Open Albums').waitFor();
      mock.state.play({ kind: 'album', number: 0 });
      await person.waitFor(() => mock.state.state === 2);
      const session = () =>
        page.evaluate(() => {
          const { metadata, playbackState } = navigator.mediaSession;
          const art = metadata?.artwork[0]?.src;
          return { title: metadata?.title, artist: metadata?.artist, art, playbackState };
        });
      await person.waitFor(async () => (await session()).playbackState === 'playing');
      const { title, artist, art } = await session();
      assert.deepEqual([title, artist], ['Ferry Road', 'Mira Lindqvist']);
      assert.ok(art.startsWith(`${mock.url}/api/v1/artwork/`), art);
      const { duration, playbackRate } = await page.evaluate(() => window.positions.at(-1));
      assert.deepEqual([duration, playbackRate], [95, 1]);

      await press(page, 'pause');
      await person.waitFor(() => mock.state.state === 3);
      await person.waitFor(async () => (await session()).playbackState === 'paused');
      await press(page, 'seekto', { seekTime: 40 });
      await person.waitFor(() => mock.state.position() >= 40000);
      const shown = () => page.evaluate(() => window.positions.at(-1).position);
      await person.waitFor(async () => (await shown()) >= 40);
      await press(page, 'seekbackward', { seekOffset: 30 });
      await person.waitFor(() => mock.state.position() < 20000);
      await press(page, 'seekforward');
      await person.waitFor(() => mock.state.position() >= 20000);
      await press(page, 'play');
      await person.waitFor(() => mock.state.state === 2);
      await press(page, 'nexttrack');
      await person.waitFor(async () => (await session()).title !== 'Ferry Road');
      await press(page, 'pause'); // since "previous" begins a track anew that is well under way
      await person.waitFor(() => mock.state.state === 3);
      await person.sends('player/seek', () => press(page, 'seekto', { seekTime: 0 }));
      await press(page, 'previoustrack');
      await person.waitFor(async () => (await session()).title === 'Ferry Road');
      await press(page, 'stop');
      await person.waitFor(async () => (await session()).playbackState === 'none');
      assert.equal(await page.evaluate(() => navigator.mediaSession.metadata), null);
      assert.equal(await page.evaluate(() => window.keys.nexttrack), null);
    }));

  it('is reached by playing silence, which is off unless somebody switches it on', () =>
    visit(async ({ mock, page, person }) => {
      await page.addInitScript(() => {
        window.sounding = [];
        const { Audio: Original } = window;
        window.Audio = function Audio() {
          const audio = new Original();
          window.sounding.push(audio);
          return audio;
        };
      });
      await page.reload();
      await person.row('Open Albums').waitFor();
      mock.state.play({ kind: 'album', number: 0 });
      await person.now.getByRole('button', { name: 'Pause' }).waitFor();
      assert.equal(await page.evaluate(() => window.sounding.length), 0);
      await person.button('Settings').click();
      await page.getByLabel('Show the music on the lock screen').check();
      const plays = () => page.evaluate(() => window.sounding[0]?.paused === false);
      await person.waitFor(plays);
      await page.keyboard.press('Escape');
      await person.now.getByRole('button', { name: 'Pause' }).click();
      await person.waitFor(async () => !(await plays()));
    }));
});

describe('the home screen', () => {
  it('gets a manifest that browsers install, with pictures of the sizes that it names', () =>
    visit(async ({ page }) => {
      const session = await page.context().newCDPSession(page);
      const { errors, url } = await session.send('Page.getAppManifest');
      assert.deepEqual(errors, []);
      assert.match(url, /manifest\.webmanifest$/);
      const { installabilityErrors } = await session.send('Page.getInstallabilityErrors');
      const names = installabilityErrors.map(({ errorId }) => errorId);
      // Tests browse in private windows, from which nothing is installed; nothing else is in the way.
      assert.deepEqual(names, ['in-incognito']);
      const sizes = await page.evaluate(async () => {
        const { icons } = await (await fetch('manifest.webmanifest')).json();
        const real = async ({ src, sizes: named, type, purpose }) => {
          const image = new Image();
          image.src = src;
          await image.decode();
          return { named, real: `${image.naturalWidth}x${image.naturalHeight}`, type, purpose };
        };
        return Promise.all(icons.map(real));
      });
      const drawn = sizes.filter(({ type }) => type === 'image/png');
      for (const { named, real } of drawn) assert.equal(real, named);
      assert.deepEqual(
        drawn.map(({ named, purpose }) => `${named} ${purpose}`),
        ['192x192 any', '512x512 any', '512x512 maskable'],
      );
    }));
});

describe('out of reach', () => {
  const keptAddresses = (page) =>
    page.evaluate(async () => {
      const cache = await caches.open('tavu-shell');
      return (await cache.keys()).map(({ url }) => new URL(url).pathname + new URL(url).search);
    });

  /** Until then the page is not done with loading, and nothing of it may hang. */
  const shellIsKept = (page) => async () => {
    const kept = await keptAddresses(page);
    return ['/', '/js/main.js', '/css/tokens.css', '/vendor/preact.js'].every((name) =>
      kept.includes(name),
    );
  };

  it('the page opens, says so, and goes on by itself when the player is back', async () => {
    let mock = await startMock();
    const { port } = mock;
    let page;
    try {
      mock.state.approve();
      page = await openPage(browser, `${mock.url}/?token=secret`, {});
      const person = new Person(page, { wide: true });
      await person.row('Open Albums').click();
      await person.row(/^Open Nachtfahrt/).waitFor();
      await person.waitFor(shellIsKept(page));
      const kept = await keptAddresses(page);
      assert.deepEqual(
        kept.filter((address) => /^\/api|secret|\?/.test(address)),
        [],
      );

      await mock.close();
      await page.goto(page.url().replace(/#.*/, ''));
      await person.heading('The player is out of reach').waitFor();
      await assertAccessible(page, 'out of reach');
      await picture(page, 'view-out-of-reach');
      mock = await startMock({ port });
      mock.state.approve();
      await person.row('Open Albums').waitFor();
      await page.getByText('Lost the connection').waitFor({ state: 'detached' });
      assertNoFaults(page);
    } finally {
      await page?.context().close();
      await mock.close();
    }
  });

  it('a player that goes without a word is noticed', () =>
    visit(async ({ mock, page, person }) => {
      await person.row('Open Albums').waitFor();
      await person.waitFor(shellIsKept(page));
      mock.faults.mute = true; // connections stay open, and nothing comes over them any more
      await page.getByRole('alert').getByText('Lost the connection to the player.').waitFor();
      mock.faults.mute = false;
      await page.getByText('Lost the connection').waitFor({ state: 'detached' });
    }));
});
