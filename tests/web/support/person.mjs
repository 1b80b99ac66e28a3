// Somebody at the page: finds things by their names, as a person or a screen reader would.
import assert from 'node:assert/strict';
import { mkdirSync } from 'node:fs';
import path from 'node:path';

import { patienceMs } from './browser.mjs';

const escaped = (text) => text.replace(/[.*+?^${}()|[\]\\]/g, '\\$&');

/** Names begin with the title and may go on with artist and time. */
export const named = (verb, title) => new RegExp(`^${verb} ${escaped(title)}(,|$)`);

export class Person {
  constructor(page, { wide }) {
    this.page = page;
    this.wide = wide;
  }

  button(name) {
    return this.page.getByRole('button', { name });
  }

  heading(name) {
    return this.page.getByRole('heading', { name, exact: typeof name === 'string' });
  }

  /**
   * What is beside the list on a wide page is a place of its own on a narrow one; the queue and the
   * messages share one part of the wide page.
   */
  async goTo(place) {
    const tab = this.page.getByRole('tab', { name: new RegExp(`^${place}`) });
    if (this.wide && (await tab.count()) > 0) await tab.click();
    if (this.wide) return;
    await this.page.getByRole('link', { name: new RegExp(`^${place}`) }).click();
  }

  async goHome() {
    await this.goTo('Browse');
    await this.page.getByRole('link', { name: /: Home$/ }).click();
    await this.page.getByRole('navigation', { name: 'You are here' }).waitFor({ state: 'detached' });
    await this.page.locator('.rows .row[data-at]').first().waitFor();
  }

  /** Opens row after row from the root; the last one only when `openLast`. */
  async walk(trail, openLast = true) {
    await this.goHome();
    for (const title of openLast ? trail : trail.slice(0, -1)) {
      await this.row(named('Open', title)).click();
    }
  }

  /** A row by its name, following "See more results" while it does not show. */
  async find(name) {
    const row = this.row(name);
    const more = this.button('See more results');
    await this.page.locator('.rows:not([aria-hidden]) .row').first().waitFor();
    while ((await row.count()) === 0 && (await more.count()) > 0) {
      const before = await this.rowCount();
      await more.click();
      await this.waitFor(async () => (await this.rowCount()) > before);
    }
    return row;
  }

  row(name) {
    return this.page.locator('.rows').getByRole('button', { name }).first();
  }

  rowCount() {
    return this.page.locator('.rows .row[data-at]').count();
  }

  get now() {
    return this.page.getByRole('region', { name: 'Now playing' });
  }

  async nowTitle() {
    return (await this.now.getByRole('heading').first().textContent()).trim();
  }

  async position() {
    return Number(await this.now.getByRole('slider', { name: 'Position' }).inputValue());
  }

  /** Does `work` and waits until the player has answered the command that comes of it. */
  async sends(command, work) {
    const isAnswer = (answer) =>
      answer.request().method() === 'POST' && answer.url().endsWith(`/api/v1/${command}`);
    await Promise.all([this.page.waitForResponse(isAnswer), work()]);
  }

  /** Does `work` and waits for what comes of it: that may not hold before, or nothing is waited for. */
  async brings(work, state) {
    assert.ok(!(await state()), `already: ${state}`);
    await work();
    await this.waitFor(state);
  }

  /** Until the page has its own letters, which are not as wide and high as those before them. */
  async hasItsLetters() {
    await this.page.evaluate(() => document.fonts.ready.then(() => {}));
  }

  /** Waits on a state instead of a time. */
  async waitFor(state, ms = patienceMs) {
    const end = Date.now() + ms;
    for (;;) {
      if (await state()) return;
      assert.ok(Date.now() < end, `still not: ${state}`);
      await this.page.waitForTimeout(50);
    }
  }
}

/** Saves what the page looks like, where the build wants pictures. */
export async function picture(page, name) {
  const folder = process.env.TAVU_WEB_SHOTS;
  if (!folder) return;
  mkdirSync(folder, { recursive: true });
  const loaded = () =>
    [...document.images].every((image) => {
      const { top, bottom } = image.getBoundingClientRect();
      return image.complete || bottom < 0 || top > window.innerHeight;
    });
  await page.waitForFunction(loaded, null, { timeout: 2000 }).catch(() => {});
  await page.screenshot({ path: path.join(folder, `${name}.png`) });
}
