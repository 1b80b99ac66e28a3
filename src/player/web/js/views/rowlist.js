import { html } from '../html.js';
import { useEffect, useLayoutEffect, useRef, useState } from '../../vendor/hooks.js';
import { useApp, useOffline } from '../context.js';
import { entriesOf, windowSize } from '../listing.js';
import { isRecord, layoutOf, seeMoreTitle } from '../rows.js';
import { observerRootOf, scrollerOf } from '../scroller.js';
import { t } from '../text.js';
import { RowContent } from './rowitem.js';

const firstSkeletons = 12;
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

export function Skeletons({ layout }) {
  return html`<ul class=${`rows ${layout}`} aria-hidden="true">
    ${Array.from({ length: firstSkeletons }, () => html`<li class="row gap"></li>`)}
  </ul>`;
}

/**
 * Follows "See more results". Who pressed it finds the focus on the first of the new rows, unless
 * the reader has gone elsewhere meanwhile: the row that was pressed has moved on or is gone.
 */
function useFollowing(listing, list, count) {
  const { actions } = useApp();
  const triedMore = useRef(null);
  const [cameAt, setCameAt] = useState(null);
  useLayoutEffect(() => {
    const { activeElement: now } = document;
    const stayed = now === null || now === document.body || now.closest('.row-more');
    if (cameAt && stayed) focusOfRow(list.current, cameAt.at)?.focus();
  }, [cameAt]);
  const follow = async (focus) => {
    triedMore.current = listing.moreRow().path;
    await actions.followMore(listing);
    if (focus) setCameAt({ at: count });
  };
  /** By itself each page is followed once; after a failure the reader decides. */
  const followOnce = () => {
    const more = listing.moreRow();
    if (more && triedMore.current !== more.path && hasScrolled(list.current))
      follow(document.activeElement?.closest('.row-more'));
  };
  return { follow, followOnce };
}

/** One position of a listing: a row, the place of one that has not come yet, or a failed window. */
function itemOf(entry, at, { count, listing, layout, record, memo }) {
  const { page, index, row, failed } = entry;
  const key = `${page}:${index}`;
  if (failed && index % windowSize === 0) {
    return html`<${FailedWindow} key=${key} onAgain=${() => listing.ensure(page, index, true)} />`;
  }
  if (row?.absent) return null;
  if (!row) {
    const near = index % watchedEvery === 0 ? key : null;
    return html`<li class="row gap" key=${key} aria-hidden="true" data-near=${near}></li>`;
  }
  return html`<li class="row" key=${key} data-at=${at}
      aria-posinset=${at + 1} aria-setsize=${count}>
    <${RowContent} row=${row} layout=${layout} number=${record ? at + 1 : 0}
      record=${record} memo=${() => memo(at)} />
  </li>`;
}

/** The rows of a listing: all of its positions at once, filled in as they come near. */
export function RowList({ listing, opened, label, memo }) {
  const list = useRef();
  const entries = entriesOf(listing);
  const more = listing.moreRow();
  const shown = more ? entries.slice(0, -1) : entries;
  const firstRows = listing.pages[0].rows.slice(0, windowSize);
  const layout = layoutOf(firstRows);
  const record = isRecord(opened, firstRows) ? opened : null;
  const count = more ? -1 : shown.length;
  const { follow, followOnce } = useFollowing(listing, list, shown.length);

  useNear(
    list,
    ({ dataset: { near } }) => {
      if (near === 'more') return followOnce();
      return listing.ensure(...near.split(':').map(Number));
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
    ${shown.map((entry, at) => itemOf(entry, at, { count, listing, layout, record, memo }))}
    ${more && html`<${SeeMore} listing=${listing} onFollow=${() => follow(true)} />`}
  </ul>`;
}

const hasScrolled = (list) => scrollerOf(list).scrollTop > 0;

/** What takes the focus in the row at this position, or null. */
export const focusOfRow = (root, at) =>
  root.querySelector(`[data-at="${at}"] [data-focus]`);
