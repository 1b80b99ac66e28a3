import { isSeeMore } from './rows.js';

export const windowSize = 50;

/** Stands where the player answered with fewer rows than it had counted. */
const absent = Object.freeze({ absent: true });

function fill(page, answer, from) {
  const counted = answer.count ?? -1;
  page.count = counted < 0 ? from + answer.rows.length : counted;
  page.rows.length = page.count;
  const end = Math.min(from + windowSize, page.count);
  for (let i = from; i < end; i += 1) page.rows[i] = answer.rows[i - from] ?? absent;
}

const newPage = (path) => ({ path, count: 0, rows: [], windows: new Map() });

async function fetchWindow(api, page, index) {
  const from = index * windowSize;
  page.windows.set(index, 'loading');
  try {
    const answer = await api.rows(page.path, from, from + windowSize - 1);
    fill(page, answer, from);
    page.windows.set(index, 'done');
    return answer;
  } catch (error) {
    page.windows.set(index, 'failed');
    throw error;
  }
}

/** The row that leads on from the last page, or null; null also where it leads in a circle. */
function moreRowOf(pages) {
  const page = pages.at(-1);
  const row = page?.rows[page.count - 1];
  if (!isSeeMore(row, page?.count - 1, page?.count)) return null;
  return pages.some((known) => known.path === row.path) ? null : row;
}

/**
 * One list of the service as the page shows it. `pages` are the service's pages, the first and
 * those that "See more results" rows led to; each knows its count and fetches its rows in windows
 * of 50. `rows` of a page is sparse: what is missing has not been asked for yet.
 */
export function createListing(path, api, onChange = () => {}) {
  const listing = {
    path,
    status: 'loading', // loading, ready, failed
    error: null,
    parent: {},
    pages: [],
    following: false,
  };
  const become = (values) => {
    Object.assign(listing, values);
    onChange();
  };
  const moreRow = () => moreRowOf(listing.pages);
  let asked = null;

  /** Asks anew; an answer to a question of before is of no more use, whenever it comes. */
  async function load() {
    const page = newPage(path);
    asked = page;
    const outcome = await fetchWindow(api, page, 0).then(
      ({ parent = {} }) => ({ status: 'ready', error: null, parent, pages: [page] }),
      (error) => ({ status: 'failed', error }),
    );
    if (asked === page) become(outcome);
  }

  /** Fetches the window around a row that comes into view; a failed one only when told `again`. */
  async function ensure(pageIndex, rowIndex, again = false) {
    const page = listing.pages[pageIndex];
    const index = Math.floor(rowIndex / windowSize);
    const known = page?.windows.get(index);
    if (!page || (known && !(known === 'failed' && again))) return;
    await fetchWindow(api, page, index).catch(() => {});
    onChange();
  }

  /** Appends the page behind the "See more results" row. Throws what the request failed with. */
  async function follow() {
    const row = moreRow();
    if (!row || listing.following) return;
    become({ following: true });
    const before = listing.pages;
    const page = newPage(row.path);
    try {
      await fetchWindow(api, page, 0);
      if (listing.pages === before) listing.pages = [...before, page];
    } finally {
      become({ following: false });
    }
  }

  return Object.assign(listing, { load, ensure, follow, moreRow });
}

/**
 * Every position of a listing in order, loaded or not: { page, index, row|null, failed }. The row
 * that led to a page that is there already is left out.
 */
export function entriesOf(listing) {
  const last = listing.pages.length - 1;
  return listing.pages.flatMap((page, p) => {
    const shown = p < last ? page.count - 1 : page.count;
    return Array.from({ length: Math.max(shown, 0) }, (_, index) => ({
      page: p,
      index,
      row: page.rows[index] ?? null,
      failed: page.windows.get(Math.floor(index / windowSize)) === 'failed',
    }));
  });
}

/** Paths are compared up to a border between components; parameters stand below their path. */
export function isAtOrBelow(path, above) {
  return (
    path.startsWith(above) && (above.endsWith('/') || '/?&'.includes(path[above.length] ?? '/'))
  );
}

/** Keeps the lists that were seen last, so that going back shows them at once. */
export function createListings(api, limit = 24) {
  const kept = new Map();
  const listeners = new Set();
  const notify = () => listeners.forEach((listener) => listener());

  function open(path) {
    let listing = kept.get(path);
    kept.delete(path);
    if (!listing) {
      listing = createListing(path, api, notify);
      listing.load();
    }
    kept.set(path, listing);
    if (kept.size > limit) kept.delete(kept.keys().next().value);
    return listing;
  }

  return {
    open,
    /**
     * Rows at or below this path have changed: the shown list asks again, others are forgotten.
     * The root, which is asked for without its path, may be any path's parent or child.
     */
    changed(path, shownPath) {
      for (const [key, listing] of kept) {
        const named = [key, ...listing.pages.map((page) => page.path)];
        if (!named.some((name) => name === '' || isAtOrBelow(name, path))) continue;
        if (key === shownPath || key === '') listing.load();
        else kept.delete(key);
      }
    },
    /** Forgets one list, so that it is asked for anew when it is next shown. */
    forget: (path) => kept.delete(path),
    /** Tries again what failed in this list, if anything did. */
    retry(path) {
      const listing = kept.get(path);
      if (listing?.status === 'failed') listing.load();
      listing?.pages.forEach((page, p) => {
        for (const [index, state] of page.windows) {
          if (state === 'failed') listing.ensure(p, index * windowSize, true);
        }
      });
    },
    clear() {
      kept.clear();
      notify();
    },
    subscribe(listener) {
      listeners.add(listener);
      return () => listeners.delete(listener);
    },
  };
}
