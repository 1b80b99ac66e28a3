// The page's address: "#/browse?path=…&q=…". Every place keeps the browse path, so that a reload
// and a shared address come back to the same list.

export const places = ['browse', 'now', 'queue', 'messages'];

/** A screen on the wall, reached by its address: "#/wall". */
const known = [...places, 'wall'];

export function parseRoute(hash) {
  const [, place = '', query = ''] = /^#?\/?([^?]*)\??(.*)$/s.exec(hash ?? '') ?? [];
  const params = new URLSearchParams(query);
  return {
    place: known.includes(place) ? place : 'browse',
    path: params.get('path') ?? '',
    text: params.get('q') ?? '',
  };
}

export function formatRoute({ place = 'browse', path = '', text = '' }) {
  const params = new URLSearchParams();
  if (path) params.set('path', path);
  if (text) params.set('q', text);
  const query = params.toString();
  return `#/${place}${query ? `?${query}` : ''}`;
}

/**
 * The router over a window. An entry is a route plus `trail` (the entries above it, for the
 * breadcrumb) and `row` (the row through which it was opened). Both live in the history's state,
 * so they survive a reload.
 */
export function createRouter(window) {
  const listeners = new Set();
  const read = () => ({
    trail: [],
    row: null,
    depth: 0,
    ...window.history.state,
    ...parseRoute(window.location.hash),
  });
  let current = read();

  const changed = () => {
    current = read();
    for (const listener of [...listeners]) listener();
  };
  window.addEventListener('popstate', changed);

  const state = (entry, depth) => ({ trail: entry.trail ?? [], row: entry.row ?? null, depth });

  return {
    get current() {
      return current;
    },
    subscribe(listener) {
      listeners.add(listener);
      return () => listeners.delete(listener);
    },
    push(entry) {
      window.history.pushState(state(entry, current.depth + 1), '', formatRoute(entry));
      changed();
    },
    replace(entry) {
      window.history.replaceState(state(entry, current.depth), '', formatRoute(entry));
      changed();
    },
    /** One step back inside the page; from a shared address, up to the root. */
    back() {
      if (current.depth > 0) window.history.back();
      else this.replace({ place: 'browse' });
    },
  };
}
