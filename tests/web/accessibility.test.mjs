// What holds in every view: axe finds nothing, nothing sticks out, every target can be hit, and a
// keyboard is enough.
import assert from 'node:assert/strict';
import { after, before, describe, it } from 'node:test';

import {
  assertAccessible,
  assertLegible,
  assertNoSidewaysScroll,
  assertTargets,
} from './support/axe.mjs';
import { launch, visit as visitPage, widths } from './support/browser.mjs';
import { Person, picture } from './support/person.mjs';
import { tour } from './support/tour.mjs';

let browser;
before(async () => {
  browser = await launch();
});
after(() => browser.close());

const visit = (options, work) => visitPage(browser, options, work);

const fileName = (where) => where.replace(/\W+/g, '-');

describe('axe finds nothing', () => {
  const dark = { colorScheme: 'dark', contrast: 'no-preference' };
  const light = { colorScheme: 'light', contrast: 'no-preference' };
  // The first look of a width is seen with all rules, the others with those on colours.
  const looks = {
    phone: { dark, light, 'dark-high-contrast': { ...dark, contrast: 'more' } },
    desktop: { dark, light, 'light-high-contrast': { ...light, contrast: 'more' } },
  };

  /** The view in every look; the page is at rest in the first again after it. */
  async function seeInEach(page, [[first, media], ...others], where, width) {
    const shot = (look) => picture(page, `view-${fileName(where)}-${width}-${look}`);
    await assertAccessible(page, where);
    await shot(first);
    for (const [look, options] of others) {
      await page.emulateMedia(options);
      await assertLegible(page, `${where}, ${look}`);
      await shot(look);
    }
    await page.emulateMedia(media);
  }

  for (const [name, viewport] of Object.entries(widths)) {
    const each = Object.entries(looks[name]);
    it(`${viewport.width} pixels: ${each.map(([look]) => look).join(', ')}`, () =>
      visit({ viewport, reducedMotion: 'reduce', ...each[0][1] }, ({ mock, page }) =>
        tour({
          mock,
          page,
          wide: name === 'desktop',
          look: (where) => seeInEach(page, each, where, viewport.width),
        }),
      ));
  }
});

describe('nothing scrolls sideways and every target is large enough', () => {
  const sizes = [
    ['320 pixels', { viewport: { width: 320, height: 640 } }],
    ['320 × 256, a desktop page at 400 %', { viewport: { width: 320, height: 256 } }],
    ['640 × 360, a phone on its side', { viewport: { width: 640, height: 360 } }],
    ['960 pixels, side by side', { viewport: { width: 960, height: 540 } }],
  ];
  for (const [size, options] of sizes) {
    it(size, () =>
      visit({ ...options, reducedMotion: 'reduce' }, ({ mock, page }) =>
        tour({
          mock,
          page,
          wide: options.viewport.width >= 960,
          look: async (where) => {
            await assertNoSidewaysScroll(page, where);
            await assertTargets(page, where);
            await picture(page, `view-${fileName(where)}-${fileName(size)}`);
          },
        }),
      ),
    );
  }

  it('text at 200 %', () =>
    visit(
      { viewport: { width: 640, height: 800 }, reducedMotion: 'reduce' },
      async ({ mock, page }) => {
        await page.addInitScript(() =>
          document.addEventListener('DOMContentLoaded', () => {
            document.documentElement.style.fontSize = '200%';
          }),
        );
        await page.reload();
        await tour({
          mock,
          page,
          wide: false,
          look: async (where) => {
            await assertNoSidewaysScroll(page, where);
            await picture(page, `view-${fileName(where)}-text-200`);
          },
        });
      },
    ));
});

describe('letters twice as large on a phone', () => {
  let large;
  before(async () => {
    large = await launch('--blink-settings=defaultFontSize=32');
  });
  after(() => large.close());

  it('keep everything within the page', () =>
    visitPage(
      large,
      { viewport: { width: 390, height: 844 }, reducedMotion: 'reduce' },
      ({ mock, page }) =>
        tour({
          mock,
          page,
          wide: false,
          look: async (where) => {
            await assertNoSidewaysScroll(page, where);
            await picture(page, `view-${fileName(where)}-large-letters`);
          },
        }),
    ));
});

/** True where the middle of the focused element is that element, and not something above it. */
const focusIsUncovered = (page) =>
  page.evaluate(() => {
    const focused = document.activeElement;
    const box = focused.getBoundingClientRect();
    const [x, y] = [box.left + Math.min(box.width / 2, 40), box.top + box.height / 2];
    const top = document.elementFromPoint(x, y);
    return top !== null && (focused === top || focused.contains(top));
  });

describe('the places stay in reach at the end of a long list', () => {
  for (const [width, height] of [
    [320, 568],
    [640, 360],
  ])
    it(`${width} × ${height}`, () =>
      visit({ viewport: { width, height } }, async ({ mock, page }) => {
        const person = new Person(page, { wide: false });
        mock.state.approve();
        await person.row('Open The whole archive').click();
        await person.row(/^Play Track number 1,/).waitFor();
        mock.state.play({ kind: 'album', number: 0 });
        const bar = page.getByRole('region', { name: 'Player' });
        await bar.waitFor();
        await page.locator('.rows .row').last().scrollIntoViewIfNeeded();
        for (const part of [page.getByRole('navigation', { name: 'Places' }), bar]) {
          const box = await part.boundingBox();
          assert.ok(box.y >= 0 && box.y + box.height <= height, JSON.stringify(box));
        }
      }));
});

describe('the keyboard', () => {
  it('reaches every row without the player bar covering it', () =>
    visit({ viewport: { width: 390, height: 500 } }, async ({ mock, page }) => {
      const person = new Person(page, { wide: false });
      mock.state.approve();
      await person.row('Open The whole archive').waitFor();
      mock.state.play({ kind: 'album', number: 0 });
      await person.row('Open The whole archive').click();
      await page.getByRole('region', { name: 'Player' }).waitFor();
      await person.row(/^Play Track number 1,/).focus();
      for (let number = 1; number < 20; number += 1) {
        for (const name of [
          `^Play Track number ${number},`,
          `^Track number ${number} \\(More\\)$`,
        ]) {
          const label = await page.evaluate(() =>
            document.activeElement.getAttribute('aria-label'),
          );
          assert.match(label, new RegExp(name));
          assert.ok(await focusIsUncovered(page), label);
          await page.keyboard.press('Tab');
        }
      }
    }));

  it('is enough from the sign-in to the rating', () =>
    visit({ viewport: widths.desktop }, async ({ mock, page }) => {
      const person = new Person(page, { wide: true });
      const focusedName = () =>
        page.evaluate(() => {
          const { activeElement: focused } = document;
          return focused.getAttribute('aria-label') ?? focused.innerText ?? '';
        });
      const tabTo = async (name) => {
        for (let presses = 0; presses < 80; presses += 1) {
          if (name.test(await focusedName())) {
            assert.ok(await focusIsUncovered(page), `${name} is covered`);
            return;
          }
          await page.keyboard.press('Tab');
        }
        assert.fail(`${name} was not reached`);
      };
      const press = async (name, key = 'Enter') => {
        await tabTo(name);
        await page.keyboard.press(key);
      };

      await person.button('Get a code').waitFor();
      await press(/^Get a code/);
      await page.getByRole('img', { name: /^Code/ }).waitFor();
      await tabTo(/^Open the sign-in page/);
      mock.state.approve();
      await person.row('Open Albums').waitFor();
      await press(/^Open Albums/);
      await person.row(/^Open Harbour/).waitFor();
      await press(/^Open Harbour Lights/);
      await person.row(/^Play First Light/).waitFor();
      await press(/^Play First Light/, ' ');
      await person.waitFor(async () => (await person.nowTitle()) === 'First Light');
      await press(/^Position$/, 'ArrowRight');
      await person.waitFor(() => mock.state.position() > 4000);
      await press(/^Pause$/);
      await person.waitFor(() => mock.state.state === 3);
      await page.keyboard.press('Enter');
      await person.waitFor(() => mock.state.state === 2);
      await press(/^Thumbs up$/);
      await page.locator('.toast').getByText('Thanks.').waitFor();
      assert.equal(await focusedName(), 'Thumbs up', 'the focus stays with what was pressed');
    }));

  it('finds the first thing to do first', () =>
    visit({ viewport: widths.phone }, async ({ mock, page }) => {
      mock.state.approve();
      await page.getByRole('button', { name: 'Open Albums' }).waitFor();
      const names = [];
      for (let i = 0; i < 4; i += 1) {
        await page.keyboard.press('Tab');
        names.push(await page.evaluate(() => document.activeElement.getAttribute('aria-label')));
      }
      assert.deepEqual(names, ['Tavu: Home', 'Search', 'Settings', 'Open Albums']);
    }));
});

describe('settings of the system', () => {
  it('reduced motion stops what slides and turns', () =>
    visit({ viewport: widths.desktop, reducedMotion: 'reduce' }, async ({ mock, page }) => {
      mock.state.approve();
      await page.getByRole('button', { name: 'Open Albums' }).waitFor();
      const times = await page.evaluate(() =>
        [...document.querySelectorAll('*')]
          .map((element) => getComputedStyle(element).transitionDuration)
          .filter((time) => time !== '0s'),
      );
      assert.deepEqual(times, []);
    }));

  it('forced colours keep the borders of what can be pressed', () =>
    visit({ viewport: widths.desktop, forcedColors: 'active' }, async ({ mock, page }) => {
      mock.state.approve();
      const settings = page.getByRole('button', { name: 'Settings' });
      await settings.waitFor();
      assert.equal(
        await settings.evaluate((element) => getComputedStyle(element).borderTopStyle),
        'solid',
      );
      await picture(page, 'view-root-forced-colours');
    }));

  it('the page says its language', () =>
    visit({ viewport: widths.desktop }, async ({ page }) => {
      assert.equal(await page.evaluate(() => document.documentElement.lang), 'en');
    }));
});
