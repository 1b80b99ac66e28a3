import { ApiError } from './api.js';
import { isMessageScreen, RowType, titleOf } from './rows.js';
import { t } from './text.js';

let toastNumber = 0;

/**
 * Everything that a press can do. No action is silent: each failure ends in a message on the
 * screen, in the words of the player or the service.
 */
export function createActions({ api, store, listings, router, now = () => performance.now() }) {
  const dispatch = (event) => store.dispatch({ now: now(), ...event });

  function toast({ kind = 'info', title, text = '', rows }) {
    toastNumber += 1;
    dispatch({ type: 'toast', toast: { id: `own-${toastNumber}`, kind, title, text, rows } });
  }

  const showScreen = (screen) =>
    dispatch({ type: 'screen', screen: screen && { at: new Date().toISOString(), ...screen } });

  const screenOfRows = (rows, more = {}) => ({
    title: rows[0]?.title ?? '',
    text: rows[0]?.longDescription ?? '',
    rows,
    ...more,
  });

  const screenOfError = (error) => ({
    title: error.title,
    text: error.detail,
    at: error.at,
    status: error.status,
    request: error.instance,
    rows: [],
  });

  /** The rows of a message that the service wants shown, or none if it has gone. */
  async function messageRows(path) {
    const answer = await api.rows(path, 0, 49);
    return answer.rows ?? [];
  }

  /** Shows what went wrong: the screen that the service names, else the words of the answer. */
  async function showProblem(error) {
    const plain = screenOfError(error);
    if (!error.screenPath) return showScreen(plain);
    const rows = await messageRows(error.screenPath).catch(() => []);
    return showScreen(
      isMessageScreen(rows)
        ? screenOfRows(rows, { status: plain.status, request: plain.request })
        : plain,
    );
  }

  /** Shows where an action led: a short message passes by, one with buttons stays. */
  async function showResult(path) {
    const rows = await messageRows(path);
    if (!rows.length) return toast({ title: t('screen.gone') });
    if (rows.length > 1 || rows[0].type !== RowType.message) return showScreen(screenOfRows(rows));
    return toast({ title: rows[0].title, text: rows[0].longDescription });
  }

  /** Runs `work`; offline or failed, it says so. Returns whether it succeeded. */
  async function attempt(work, onError = reportError) {
    if (store.state.connection !== 'live') {
      toast({ kind: 'error', title: t('lost.control') });
      return false;
    }
    try {
      await work();
      return true;
    } catch (error) {
      if (!(error instanceof ApiError)) throw error;
      await onError(error);
      return false;
    }
  }

  async function reportError(error) {
    if (error.screenPath) return showProblem(error);
    return toast({ kind: 'error', title: error.title, text: error.detail });
  }

  const command = (name, body) =>
    attempt(async () => {
      const answer = await api.command(name, body);
      if (answer?.result?.path) await showResult(answer.result.path);
    });

  const route = () => router.current;

  /** What the buttons of a message do when it stands in the browse pane. */
  const inBrowse = {
    close() {
      listings.forget(route().trail.at(-1)?.path ?? '');
      router.back();
    },
    open: (path) => openPath(path, null),
  };

  /** … and when it stands in a dialog. */
  const inDialog = {
    close: () => showScreen(null),
    async open(path) {
      const rows = await messageRows(path);
      if (isMessageScreen(rows)) return showScreen(screenOfRows(rows));
      showScreen(null);
      return openPath(path, null);
    },
  };

  function openPath(path, row) {
    const { trail, path: from, text, row: via } = route();
    const here = { path: from, text, row: via };
    router.push({ place: 'browse', path, row, trail: [...trail, here] });
  }

  return {
    toast,
    showScreen,
    showProblem,
    inBrowse,
    inDialog,
    closeToast: (id) => dispatch({ type: 'toastGone', id }),
    markRead: () => dispatch({ type: 'readAll' }),

    open: (row) => openPath(row.path, slim(row)),
    goTo: (place) => router.push({ ...route(), place }),
    goHome: () => router.push({ place: 'browse', trail: [] }),
    goToTrail(index) {
      const entry = route().trail[index];
      router.push({ place: 'browse', ...entry, trail: route().trail.slice(0, index) });
    },
    back: () => router.back(),

    async play(row) {
      dispatch({ type: 'starting', ref: row.ref });
      dispatch({ type: 'announce', text: t('row.starting', { title: titleOf(row) }) });
      await attempt(() => api.play(row.ref), showProblem);
      dispatch({ type: 'starting', ref: '' });
    },

    /** Presses an action row; `where` says what closing and opening mean there. */
    activate: (row, where, onError = reportError) =>
      attempt(async () => {
        const answer = await api.activate({ ref: row.ref });
        if (answer.result?.path) await where.open(answer.result.path);
        else if (answer.close) where.close();
      }, onError),

    /** Rates a row of a list; the service's answer shows like that of any other action. */
    rateRow: (row, up) =>
      attempt(async () => {
        const answer = await api.activate({
          path: row.mediaData.metaData.likeItPath,
          role: 'likeIt',
          value: up,
        });
        if (answer.result?.path) await showResult(answer.result.path);
      }),
    showRowMenu: (row) => dispatch({ type: 'rowMenu', row }),

    async search(text) {
      const wanted = text.trim();
      if (!wanted) return false;
      return attempt(async () => {
        const { path } = await api.search(wanted);
        const again = Boolean(route().text);
        const entry = { place: 'browse', path, text: wanted, trail: again ? route().trail : [] };
        if (again) router.replace(entry);
        else router.push(entry);
      });
    },

    followMore: (listing) => attempt(() => listing.follow()),

    pause: () => command('pause'),
    next: () => command('next'),
    previous: () => command('previous'),
    stop: () => command('stop'),
    seek: (position) => command('seek', { position: Math.round(position) }),
    setMode: (mode) => command('mode', { mode }),
    setVolume: (volume) => command('volume', { volume }),
    setMute: (mute) => command('volume', { mute }),
    rate: (rating) => command(rating === 'up' ? 'like' : 'dislike'),

    startLogin: () => attempt(() => api.startLogin()),
    logout: () => attempt(() => api.logout()),
    selectOutput: (id) => attempt(() => api.selectOutput(id)),
  };
}

/** The part of a row that a page's heading needs; the history's state is no place for all of it. */
function slim(row) {
  const { title, icon, type, ref, playable, mediaData, containerPlayable, audioType } = row;
  return { title, icon, type, ref, playable, mediaData, containerPlayable, audioType };
}
