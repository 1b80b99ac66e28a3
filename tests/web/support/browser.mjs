// One headless browser per test file, and pages that fail the test on any fault of the page's own.
import assert from 'node:assert/strict';
import { chromium } from 'playwright-core';

import { startMock } from '../mockplayer.mjs';
import { hesitationMs, slowDown } from './slowness.mjs';

const executablePath = process.env.TAVU_CHROMIUM ?? '/usr/bin/chromium';
const args = [
  '--headless',
  '--no-sandbox',
  '--disable-gpu',
  '--disable-quic',
  '--no-first-run',
  '--disable-background-networking',
  '--disable-component-update',
  '--disable-sync',
];

/** A watchdog for states, not a measure: machines that build beside the tests are slow. */
export const patienceMs = 30000;

export const widths = { phone: { width: 390, height: 844 }, desktop: { width: 1280, height: 800 } };

export const launch = (...more) =>
  chromium.launch({ executablePath, args: [...args, ...more], slowMo: hesitationMs });

/**
 * A page of its own at `base`. `faults` collects what the page complains about: script errors,
 * console errors and breaches of the content security policy.
 */
export async function openPage(browser, base, { viewport = widths.desktop, ...options } = {}) {
  const context = await browser.newContext({
    viewport,
    colorScheme: 'dark',
    locale: 'en-GB',
    ...options,
  });
  await context.grantPermissions(['clipboard-read', 'clipboard-write']);
  const page = await context.newPage();
  page.setDefaultTimeout(patienceMs);
  page.faults = [];
  page.on('pageerror', (error) => page.faults.push(String(error)));
  page.on('console', (message) => {
    if (message.type() === 'error') page.faults.push(message.text());
  });
  await slowDown(page);
  await page.goto(base);
  return page;
}

/**
 * Runs `work({ mock, page })` with a mock player and a page of its own, and cleans up whatever
 * happens. Fails on faults of the page.
 */
export async function visit(browser, { token, query = '', prepare = () => {}, ...options }, work) {
  const mock = await startMock({ token });
  let page;
  try {
    prepare(mock);
    page = await openPage(browser, mock.url + query, options);
    await work({ mock, page });
    assertNoFaults(page);
  } finally {
    await page?.context().close();
    await mock.close();
  }
}

/** Network failures that a test provokes are logged by the browser itself; those are expected. */
const provoked = /Failed to load resource|net::ERR_|EventSource/;

export function assertNoFaults(page) {
  assert.deepEqual(
    page.faults.filter((fault) => !provoked.test(fault)),
    [],
  );
}
