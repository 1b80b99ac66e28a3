import { readFileSync } from 'node:fs';
import { after, before, describe, it } from 'node:test';

import { startMock } from './mockplayer.mjs';
import { steps } from './scenario.mjs';
import { assertNoFaults, launch, openPage, widths } from './support/browser.mjs';
import { mockTrails } from './support/catalogue.mjs';
import { Person } from './support/person.mjs';

const file = process.env.TAVU_WEB_TRAILS;
const trails = file ? JSON.parse(readFileSync(file, 'utf8')) : mockTrails;

for (const [name, viewport] of Object.entries(widths)) {
  describe(`a stranger at ${viewport.width} pixels`, () => {
    const scene = { trails, name };
    let browser;
    let mock;

    before(async () => {
      if (!process.env.TAVU_WEB_URL) mock = await startMock();
      browser = await launch();
      scene.page = await openPage(browser, process.env.TAVU_WEB_URL ?? mock.url, { viewport });
      scene.person = new Person(scene.page, { wide: viewport.width >= 960 });
    });
    after(async () => {
      await browser?.close();
      await mock?.close();
    });

    for (const [what, step] of steps) it(what, () => step(scene));
    it('leaves no fault in the page', () => assertNoFaults(scene.page));
  });
}
