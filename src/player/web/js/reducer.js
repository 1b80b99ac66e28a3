// Everything that the page knows about the player, and how each event changes it. Pure. `now` in
// an event is the page's own monotonic clock in milliseconds: the player's wall clock may differ.

import { wordsOf } from './words.js';

export const PlayState = { idle: 0, buffering: 1, playing: 2, paused: 3 };
export const keptMessages = 20;
const shownToasts = 3;
const impatientMs = 4000;

export const initialState = {
  connection: 'connecting', // connecting, live, lost, refused (an access code is wanted)
  service: { name: '' },
  login: null,
  player: null,
  queueVersion: 0, // another number: the queue is to be asked for again
  messages: [],
  read: [],
  toasts: [],
  screen: null, // the message shown in a dialog
  rowMenu: null, // the row whose further actions are offered
  busy: {}, // commands by their names: how many have not been answered yet
  starting: '', // ref of the row that is being started
  announcement: '', // spoken by screen readers, not shown
};

const withPlayer = (state, player, now) => ({
  ...state,
  player: {
    ...player,
    receivedAt: now,
    sleepEndsAt: player.sleep?.at ? now + Number(player.sleep.remaining) : 0,
  },
});

const withLogin = (state, login, now) => ({
  ...state,
  login: login && { ...login, endsAt: now + (Number(login.expiresIn) || 0) * 1000 },
});

const sameText = (a, b) => a.title === b.title && (a.text ?? '') === (b.text ?? '');

const isTold = (screen, toast) =>
  sameText(screen, toast) || Boolean(toast.text && screen.text === toast.text);

/**
 * A failed press is told twice, by its answer and by an event (`told`), however far apart these
 * arrive; and an impatient hand presses twice. The listener sees one note.
 */
function echoedBy(state, toast, now) {
  return state.toasts.find((t) => {
    const otherWay = Boolean(t.told) !== Boolean(toast.told);
    return sameText(t, toast) && (otherWay ? !t.twice : now - t.at < impatientMs);
  });
}

function withToast(state, toast, now) {
  if (state.screen && isTold(state.screen, toast)) return state;
  const echoed = echoedBy(state, toast, now);
  if (!echoed)
    return { ...state, toasts: [...state.toasts, { ...toast, at: now }].slice(-shownToasts) };
  return { ...state, toasts: state.toasts.map((t) => (t === echoed ? { ...t, twice: true } : t)) };
}

const worded = (message) => ({ ...message, ...wordsOf(message.title, message.text) });

function withMessage(state, message, now) {
  const known = state.messages.some((m) => m.id === message.id);
  if (known) return state;
  const messages = [...state.messages, worded(message)].slice(-keptMessages);
  const toast = { ...worded(message), id: `message-${message.id}`, told: true };
  return withToast({ ...state, messages }, toast, now);
}

function withScreen(state, screen) {
  if (!screen) return { ...state, screen };
  const toasts = state.toasts.filter((toast) => !isTold(screen, toast));
  return { ...state, screen, toasts };
}

const withQueueChanged = (state) => ({ ...state, queueVersion: state.queueVersion + 1 });

function withSnapshot(state, snapshot, now) {
  let next = { ...withQueueChanged(state), connection: 'live' };
  next.service = snapshot.service ?? state.service;
  next = withLogin(next, snapshot.login ?? null, now);
  if (snapshot.player) next = withPlayer(next, snapshot.player, now);
  return { ...next, messages: (snapshot.messages ?? []).slice(-keptMessages).map(worded) };
}

function withPosition(state, position, now) {
  if (!state.player) return state;
  return { ...state, player: { ...state.player, position, receivedAt: now } };
}

const handlers = {
  snapshot: (state, e) => withSnapshot(state, e.data, e.now),
  login: (state, e) => withLogin(state, e.data, e.now),
  player: (state, e) => withPlayer(state, e.data, e.now),
  position: (state, e) => withPosition(state, e.data.position, e.now),
  queue: (state) => withQueueChanged(state),
  message: (state, e) => withMessage(state, e.data, e.now),
  connection: (state, e) =>
    state.connection === e.connection ? state : { ...state, connection: e.connection },
  toast: (state, e) => withToast(state, e.toast, e.now),
  toastGone: (state, e) => ({ ...state, toasts: state.toasts.filter((x) => x.id !== e.id) }),
  screen: (state, e) => withScreen(state, e.screen),
  rowMenu: (state, e) => ({ ...state, rowMenu: e.row }),
  busy: (state, { name, by }) => ({
    ...state,
    busy: { ...state.busy, [name]: (state.busy[name] ?? 0) + by },
  }),
  starting: (state, e) => ({ ...state, starting: e.ref }),
  announce: (state, e) => ({ ...state, announcement: e.text }),
  readAll: (state) => ({ ...state, read: state.messages.map((m) => m.id) }),
};

export function reduce(state, event) {
  return handlers[event.type]?.(state, event) ?? state;
}

export const unreadCount = (state) =>
  state.messages.filter((message) => !state.read.includes(message.id)).length;

/** Where the track is now, counted on from what the player last said. */
export function positionAt(player, now) {
  if (!player) return 0;
  const base = Number(player.position) || 0;
  const moved = player.state === PlayState.playing ? Math.max(0, now - player.receivedAt) : 0;
  const end = player.duration > 0 ? player.duration : Infinity;
  return Math.min(base + moved, end);
}

/** True while there is a track to show. */
export const hasTrack = (player) => Boolean(player && (player.title || player.state > 0));
