import { html } from '../html.js';
import { useEffect, useLayoutEffect, useRef } from '../../vendor/hooks.js';
import { useApp, useListing, useStore } from '../context.js';
import { moveFocus } from '../focus.js';
import { entriesOf } from '../listing.js';
import {
  artistOf,
  expectedLayout,
  isMessageScreen,
  pictureOf,
  signOf,
  titleOf,
  wordsOf,
} from '../rows.js';
import { scrollerOf, scrollTargetOf } from '../scroller.js';
import { t } from '../text.js';
import { Button, Picture } from './controls.js';
import { Icon } from './icons.js';
import { focusOfRow, RowList, Skeletons } from './rowlist.js';
import { Screen } from './screen.js';

/** Where each history entry was scrolled to and which row was left, for the way back. */
const left = new Map();
let shownKey = null;

const keyOf = (route) => `${route.depth}|${route.path}`;

function forgetDeeper(depth) {
  for (const key of left.keys()) if (Number.parseInt(key, 10) > depth) left.delete(key);
}

export function titleOfEntry(entry, serviceName) {
  if (entry.text) return t('search.results', { text: entry.text });
  return (entry.row && titleOf(entry.row)) || serviceName || t('home');
}

function Trail({ route }) {
  const { actions } = useApp();
  if (!route.path) return null;
  const trail = route.trail.length ? route.trail : [{ path: '', text: '', row: null }];
  const go = (index) => (event) => {
    event.preventDefault();
    if (route.trail.length) actions.goToTrail(index);
    else actions.goHome();
  };
  return html`<div class="trail">
    <button type="button" class="button ghost" aria-label=${t('back')} title=${t('back')}
      onClick=${actions.back}><${Icon} name="back" /></button>
    <nav aria-label=${t('trail')}><ol>
      ${trail.map(
        (entry, i) => html`<li key=${i}>
        <a href="#/browse" onClick=${go(i)}>${entry.path ? titleOfEntry(entry) : t('home')}</a>
      </li>`,
      )}
    </ol></nav>
  </div>`;
}

const saidBy = (listing) => wordsOf(entriesOf(listing).map(({ row }) => row));

function countText(listing) {
  if (saidBy(listing)) return '';
  const entries = entriesOf(listing).length - (listing.moreRow() ? 1 : 0);
  if (listing.moreRow()) return t('browse.countMore', { count: entries });
  return entries === 1 ? t('browse.count.one') : t('browse.count', { count: entries });
}

/** The heading of a list: with picture and play button when it was opened from a row with one. */
function Heading({ route, listing, heading }) {
  const { actions } = useApp();
  const service = useStore((state) => state.service.name);
  const starting = useStore((state) => state.starting);
  const { row } = route;
  const title = route.path ? titleOfEntry(route) : service || t('place.browse');
  const rich = row && (pictureOf(row) || row.containerPlayable);
  return html`<header class="heading ${rich ? 'rich' : ''} ${row?.playable ? '' : 'folder'}">
    ${rich && html`<${Picture} url=${pictureOf(row)} sign=${signOf(row)} eager />`}
    <div class="heading-text">
      <h1 tabindex="-1" ref=${heading}>${title}</h1>
      ${rich && artistOf(row) && html`<p class="heading-by">${artistOf(row)}</p>`}
      <p class="heading-count">${(listing.status === 'ready' && countText(listing)) || '\u00a0'}</p>
      ${
        rich &&
        row.playable &&
        html`<${Button} kind="primary" icon="play" iconSize=${20}
          label=${t('row.play', { title: titleOf(row) })} unavailable=${starting === row.ref}
          onClick=${() => actions.play(row)}><span>${t('play')}</span></${Button}>`
      }
    </div>
  </header>`;
}

function Failed({ listing }) {
  const { error } = listing;
  return html`<div class="notice" role="alert">
    <span class="screen-sign"><${Icon} name="error" size=${32} /></span>
    <h2>${error.title || t('browse.failed')}</h2>
    ${error.detail && html`<p>${error.detail}</p>`}
    <button type="button" class="button primary" onClick=${listing.load}>
      <span>${t('browse.again')}</span></button>
  </div>`;
}

function Empty({ route }) {
  const text = route.text ? t('search.empty', { text: route.text }) : t('browse.empty');
  return html`<p class="notice">${text}</p>`;
}

function Content({ route, listing, memo, title }) {
  if (listing.status === 'failed') return html`<${Failed} listing=${listing} />`;
  if (listing.status === 'loading') {
    const layout = route.path ? expectedLayout(route.row) : 'grid';
    return html`<${Skeletons} layout=${layout} />`;
  }
  if (entriesOf(listing).length === 0) return html`<${Empty} route=${route} />`;
  const words = saidBy(listing);
  if (words) return html`<p class="notice">${words}</p>`;
  return html`<${RowList} key=${listing.path} listing=${listing} opened=${route.row}
    label=${title} memo=${memo} />`;
}

const screenOf = (rows) => ({
  title: rows[0].title,
  text: rows[0].longDescription,
  rows,
  at: new Date().toISOString(),
});

/** A service page that is a message stands here in the list's place; Escape leads back. */
function MessagePage({ rows }) {
  const { actions } = useApp();
  const screen = useRef(null);
  if (screen.current?.rows !== rows) screen.current = screenOf(rows);
  const close = actions.inBrowse.close;
  return html`<div onKeyDown=${(event) => event.key === 'Escape' && close()}>
    <${Screen} screen=${screen.current} where=${actions.inBrowse} />
  </div>`;
}

/**
 * Keeps scroll position and focus per history entry. Focus moves only when the list changes: to the
 * row that was left, else to the heading. What a search found takes it out of the search field.
 */
function usePlaceKeeping(route, listing, heading) {
  const key = keyOf(route);
  const ready = listing.status !== 'loading';
  useLayoutEffect(() => {
    if (!heading.current || !ready) return undefined;
    const scroller = scrollerOf(heading.current);
    const target = scrollTargetOf(scroller);
    const kept = left.get(key);
    scroller.scrollTop = kept?.top ?? 0;
    const remember = () => left.set(key, { ...left.get(key), top: scroller.scrollTop });
    target.addEventListener('scroll', remember, { passive: true });
    return () => target.removeEventListener('scroll', remember);
  }, [key, ready]);
  useLayoutEffect(() => {
    const first = shownKey === null;
    const arrived = shownKey !== key;
    shownKey = key;
    if (arrived) forgetDeeper(route.depth);
    if (first || !(arrived || document.activeElement === heading.current)) return;
    const row = ready ? focusOfRow(document, left.get(key)?.at) : null;
    if (row) moveFocus(row);
    else if (arrived && route.text) heading.current?.focus({ preventScroll: true });
    else moveFocus(heading.current, { preventScroll: true });
  }, [key, ready]);
  return (at) => left.set(key, { at, top: scrollerOf(heading.current).scrollTop });
}

export function Browse({ route }) {
  const { store, listings } = useApp();
  const listing = useListing(route.path);
  const service = useStore((state) => state.service.name);
  const heading = useRef();
  const memo = usePlaceKeeping(route, listing, heading);
  const title = route.path ? titleOfEntry(route) : service || t('place.browse');
  const rows = listing.pages[0]?.rows;

  useEffect(() => listings.retry(route.path), [keyOf(route)]);
  useEffect(() => {
    if (listing.status !== 'ready' || isMessageScreen(rows)) return;
    const what = saidBy(listing) || countText(listing);
    store.dispatch({ type: 'announce', text: `${title}, ${what}` });
  }, [listing.status, listing.path]);

  if (listing.status === 'ready' && isMessageScreen(rows)) {
    return html`<${Trail} route=${route} /><${MessagePage} rows=${rows} />`;
  }
  return html`
    <${Trail} route=${route} />
    <${Heading} route=${route} listing=${listing} heading=${heading} />
    <${Content} route=${route} listing=${listing} memo=${memo} title=${title} />`;
}
