import { createContext } from '../vendor/preact.js';
import {
  useContext,
  useEffect,
  useLayoutEffect,
  useReducer,
  useRef,
  useState,
} from '../vendor/hooks.js';

/** { store, api, listings, actions, router, preferences } */
export const App = createContext(null);

export const useApp = () => useContext(App);

/** What `select` takes out of the store; renders again when that changes. */
export function useStore(select) {
  const { store } = useApp();
  const [, render] = useReducer((n) => n + 1, 0);
  const latest = useRef();
  latest.current = { select, value: select(store.state) };
  useLayoutEffect(() => {
    const check = () => {
      const { select: chosen, value } = latest.current;
      if (!Object.is(chosen(store.state), value)) render();
    };
    check();
    return store.subscribe(check);
  }, [store]);
  return latest.current.value;
}

/** True while the player is out of reach: nothing that is pressed could arrive. */
export const useOffline = () => useStore((state) => state.connection !== 'live');

export function useMedia(query) {
  const [matches, set] = useState(() => window.matchMedia(query).matches);
  useEffect(() => {
    const list = window.matchMedia(query);
    const changed = () => set(list.matches);
    changed();
    list.addEventListener('change', changed);
    return () => list.removeEventListener('change', changed);
  }, [query]);
  return matches;
}

/** The page's clock, ticking every `everyMs` while `active`. */
export function useNow(active, everyMs = 500) {
  const [now, set] = useState(() => performance.now());
  useEffect(() => {
    set(performance.now());
    if (!active) return undefined;
    const timer = setInterval(() => set(performance.now()), everyMs);
    return () => clearInterval(timer);
  }, [active, everyMs]);
  return active ? Math.max(now, performance.now() - everyMs) : performance.now();
}

/** The list of a path, loading if need be; renders again as it fills. */
export function useListing(path) {
  const { listings } = useApp();
  const [, render] = useReducer((n) => n + 1, 0);
  useLayoutEffect(() => listings.subscribe(render), [listings]);
  return listings.open(path);
}
