import { html } from '../html.js';
import { useEffect, useLayoutEffect, useRef, useState } from '../../vendor/hooks.js';
import { useApp, useOffline } from '../context.js';
import { entriesOf, windowSize } from '../listing.js';
import { isRecord, layoutOf, seeMoreTitle } from '../rows.js';
import { observerRootOf, scrollerOf } from '../scroller.js';
import { t } from '../text.js';
import { RowContent } from './rowitem.js';

const firstSkeletons = 8;
const watchedEvery = 8; // one placeholder in so many is enough to notice that a gap comes near
const nearPx = 800;

/** Runs `near(element)` for each marked element inside `list` that comes near the visible part. */
function useNear(list, near, changed) {
  const latest = useRef();
  latest.current = near;
  useEffect(() => {
    const observer = new IntersectionObserver(
      (seen) => {
        for (const { isIntersecting, target } of seen) if (isIntersecting) latest.current(target);
      },
      { root: observerRootOf(list.current), rootMargin: `${nearPx}px 0px` },
    );
    for (const element of list.current.querySelectorAll('[data-near]')) observer.observe(element);
    return () => observer.disconnect();
  }, changed);
}

function SeeMore({ listing, onFollow }) {
  const offline = useOffline();
  return html`<li class="row row-more" key="more" data-near="more">
    <button type="button" class="row-main" data-focus aria-disabled=${offline ? 'true' : null}
        aria-busy=${listing.following ? 'true' : null} onClick=${onFollow}>
      ${listing.following && html`<span class="spinner" aria-hidden="true"></span>`}
      <span class="row-text"><span class="row-title">${seeMoreTitle}</span></span>
    </button>
  </li>`;
}

const FailedWindow = ({ onAgain }) => html`<li class="row row-more">
  <button type="button" class="row-main" data-focus onClick=${onAgain}>
    <span class="row-text"><span class="row-title">${t('browse.windowFailed')}</span></span>
  </button>
</li>`;

export function Skeletons() {
  return html`<ul class="rows list" aria-hidden="true">
    ${Array.from({ length: firstSkeletons }, () => html`<li class="row gap"></li>`)}
  </ul>`;
}

/** The rows of a listing: all of its positions at once, filled in as they come near. */
export function RowList({ listing, opened, label, memo }) {
  const { actions } = useApp();
  const list = useRef();
  const triedMore = useRef(null);
  const [cameAt, setCameAt] = useState(null);
  const entries = entriesOf(listing);
  const more = listing.moreRow();
  const shown = more ? entries.slice(0, -1) : entries;
  const firstRows = listing.pages[0].rows.slice(0, windowSize);
  const layout = layoutOf(firstRows);
  const record = isRecord(opened, firstRows) ? opened : null;

  const follow = async (focus) => {
    triedMore.current = more.path;
    const at = shown.length;
    await actions.followMore(listing);
    if (focus) setCameAt({ at });
  };

  // The row that was pressed has moved on or is gone; the first of the new ones takes its place,
  // unless the reader has gone elsewhere meanwhile.
  useLayoutEffect(() => {
    const { activeElement: now } = document;
    const stayed = now === null || now === document.body || now.closest('.row-more');
    if (cameAt && stayed) focusOfRow(list.current, cameAt.at)?.focus();
  }, [cameAt]);

  useNear(
    list,
    (element) => {
      if (element.dataset.near !== 'more') {
        const [page, index] = element.dataset.near.split(':').map(Number);
        listing.ensure(page, index);
      } else if (more && triedMore.current !== more.path && hasScrolled(list.current)) {
        follow(document.activeElement?.closest('.row-more'));
      }
    },
    [
      listing,
      listing.pages,
      entries.length,
      listing.pages.map((p) => [...p.windows.values()]).join(),
    ],
  );

  return html`<ul class="rows ${layout} ${record ? 'numbered' : ''}" role="list"
      aria-label=${label} ref=${list}>
    ${shown.map(({ page, index, row, failed }, at) => {
      const key = `${page}:${index}`;
      if (failed && index % windowSize === 0) {
        const again = () => listing.ensure(page, index, true);
        return html`<${FailedWindow} key=${key} onAgain=${again} />`;
      }
      if (row?.absent) return null;
      if (!row) {
        const near = index % watchedEvery === 0 ? key : null;
        return html`<li class="row gap" key=${key} aria-hidden="true" data-near=${near}></li>`;
      }
      return html`<li class="row" key=${key} data-at=${at}
          aria-posinset=${at + 1} aria-setsize=${more ? -1 : shown.length}>
        <${RowContent} row=${row} layout=${layout} number=${record ? at + 1 : 0}
          record=${record} memo=${() => memo(at)} />
      </li>`;
    })}
    ${more && html`<${SeeMore} listing=${listing} onFollow=${() => follow(true)} />`}
  </ul>`;
}

const hasScrolled = (list) => scrollerOf(list).scrollTop > 0;

/** What takes the focus in the row at this position, or null. */
export const focusOfRow = (root, at) =>
  root.querySelector(`[data-at="${at}"] [data-focus]`);
