// The scenario at a phone's and at a desk's width: against the mock, against the real programs when
// TAVU_PLAYER names them (support/programs.mjs), or against any player at TAVU_WEB_URL.
import { readFileSync } from 'node:fs';
import { after, before, describe, it } from 'node:test';

import { startMock } from './mockplayer.mjs';
import { steps } from './scenario.mjs';
import { assertNoFaults, launch, openPage, widths } from './support/browser.mjs';
import { mockTrails } from './support/catalogue.mjs';
import { Person } from './support/person.mjs';
import { sampleTrails, startPrograms } from './support/programs.mjs';

const { TAVU_WEB_URL: url, TAVU_WEB_TRAILS: file, TAVU_PLAYER: program } = process.env;

async function startPlayer() {
  if (url) return { url, close: async () => {} };
  return program ? startPrograms() : startMock();
}

const ownTrails = program ? sampleTrails : mockTrails;
const trails = file ? JSON.parse(readFileSync(file, 'utf8')) : ownTrails;
const prefix = program ? 'real-' : '';

for (const [name, viewport] of Object.entries(widths)) {
  describe(`a stranger at ${viewport.width} pixels`, () => {
    const scene = { trails, name: prefix + name };
    let browser;
    let player;

    before(async () => {
      player = await startPlayer();
      browser = await launch();
      scene.page = await openPage(browser, player.url, { viewport });
      scene.person = new Person(scene.page, { wide: viewport.width >= 960 });
    });
    after(async () => {
      await browser?.close();
      await player?.close();
    });

    for (const [what, step] of steps) it(what, () => step(scene));
    it('leaves no fault in the page', () => assertNoFaults(scene.page));
  });
}
