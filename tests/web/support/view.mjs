// Pages of a browser that a file of tests shares, each against a mock of its own.
import { after, before } from 'node:test';

import { launch, visit as visitPage, widths } from './browser.mjs';
import { Person } from './person.mjs';

let browser;
before(async () => {
  browser = await launch();
});
after(() => browser.close());

/** Runs `work` with a mock and a page of its own, signed in unless told otherwise. */
export function visit({ signedIn = true, wide = true, ...options }, work) {
  const viewport = wide ? widths.desktop : widths.phone;
  const prepare = (mock) => signedIn && mock.state.approve();
  return visitPage(browser, { viewport, prepare, ...options }, ({ mock, page }) =>
    work({ mock, page, person: new Person(page, { wide }) }),
  );
}

export const asked = (mock, what) => mock.calls.filter((call) => call === what).length;
