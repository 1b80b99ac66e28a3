import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { createRequire } from 'node:module';

const source = readFileSync(createRequire(import.meta.url).resolve('axe-core/axe.min.js'), 'utf8');

const all = ['wcag2a', 'wcag2aa', 'wcag21a', 'wcag21aa', 'wcag22aa', 'best-practice'];
/** Those whose answer depends on the colours. */
const ofColours = ['color-contrast', 'link-in-text-block'];

/** Fails with what axe finds wrong, each with the elements concerned. */
export async function assertAccessible(page, where) {
  const passes = await assertRulesKept(page, where, all);
  assert.ok(passes.length > 10, `${where}: axe looked at hardly anything`);
}

/** The same for a further look of a view: nothing but its colours has changed. */
export async function assertLegible(page, where) {
  const passes = await assertRulesKept(page, where, ofColours);
  assert.ok(passes.some(({ id }) => id === 'color-contrast'), `${where}: axe saw no text`);
}

/** What passes. */
async function assertRulesKept(page, where, runOnly) {
  // As evaluated text, not as a script element: the page's own policy forbids those.
  if (!(await page.evaluate(() => 'axe' in window))) await page.evaluate(source);
  const { violations, passes } = await page.evaluate(
    (rules) => window.axe.run(document, { runOnly: rules, resultTypes: ['violations'] }),
    runOnly,
  );
  const found = violations.map(
    ({ id, help, nodes }) =>
      `${id}: ${help}\n  ${nodes
        .slice(0, 4)
        .map(
          (node) =>
            `${node.html.slice(0, 160)} | ${node.failureSummary?.split('\n')[1]?.trim() ?? ''}`,
        )
        .join('\n  ')}`,
  );
  assert.deepEqual(found, [], where);
  return passes;
}

/** Nothing may stick out sideways: not the page, nor anything in it. */
export async function assertNoSidewaysScroll(page, where) {
  const found = await page.evaluate(() => {
    const wide = document.documentElement.clientWidth;
    const scrolls = [...document.querySelectorAll('html, [data-scroller], .aside, dialog')]
      .filter((element) => element.scrollWidth > element.clientWidth + 1)
      .map((element) => `${element.tagName} ${element.scrollWidth} > ${element.clientWidth}`);
    const out = [...document.querySelectorAll('button, a, input, h1, h2, p, img')]
      .filter((element) => !element.closest('.off-screen') && element.className !== 'glow')
      .map((element) => [element, element.getBoundingClientRect()])
      .filter(([, box]) => box.width > 0 && (box.right > wide + 1 || box.left < -1))
      .map(([element, box]) => `${element.outerHTML.slice(0, 80)} ${box.left}..${box.right}`);
    return [...scrolls, ...out];
  });
  assert.deepEqual(found, [], where);
}

/** Everything to press is at least 24 × 24 CSS pixels; links within a sentence may be smaller. */
export async function assertTargets(page, where) {
  const small = await page.evaluate(() =>
    [...document.querySelectorAll('button, a[href], input, summary')]
      .filter((element) => element.checkVisibility() && !element.matches('.choice input'))
      .map((element) => [element, element.getBoundingClientRect()])
      .filter(([, box]) => box.width > 0 && (box.width < 24 || box.height < 24))
      .map(([element, box]) => `${element.outerHTML.slice(0, 100)} ${box.width}×${box.height}`),
  );
  assert.deepEqual(small, [], where);
}
