import { createCommands } from './commands.js';
import { createNavigation } from './navigation.js';
import { createNotices } from './notices.js';
import { createRowActions } from './rowactions.js';

/**
 * Searches, and shows what was found, unless the reader has gone elsewhere meanwhile; a further
 * search takes the place of the one before.
 */
function createSearch({ api, router, attempt }) {
  let searches = 0;
  return async (text) => {
    const wanted = text.trim();
    if (!wanted) return false;
    const from = router.current;
    searches += 1;
    const number = searches;
    return attempt(async () => {
      const { path } = await api.search(wanted);
      if (router.current !== from || number !== searches) return;
      const { text: before, trail } = from;
      const entry = { place: 'browse', path, text: wanted, trail: before ? trail : [] };
      if (before) router.replace(entry);
      else router.push(entry);
    });
  };
}

/**
 * Everything that a press can do. No action is silent: each failure ends in a message on the
 * screen, in the words of the player or the service.
 */
export function createActions({ api, store, listings, router, now = () => performance.now() }) {
  const dispatch = (event) => store.dispatch({ now: now(), ...event });
  const notices = createNotices({ api, store, dispatch });
  const { attempt, toast, showScreen, showProblem, showResult, reportError } = notices;
  return {
    ...createNavigation({ router, listings, notices }),
    ...createRowActions({ api, dispatch, notices, now }),
    ...createCommands({ api, store, dispatch, notices }),
    toast,
    showScreen,
    showProblem,
    showResult,
    reportError,
    closeToast: (id) => dispatch({ type: 'toastGone', id }),
    markRead: () => dispatch({ type: 'readAll' }),
    search: createSearch({ api, router, attempt }),
    followMore: (listing) => attempt(() => listing.follow()),
    startLogin: () => attempt(() => api.startLogin()),
    logout: () => attempt(() => api.logout()),
  };
}
