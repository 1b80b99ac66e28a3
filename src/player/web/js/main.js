import { h, render } from '../vendor/preact.js';
import { createAccess } from './access.js';
import { createActions } from './actions.js';
import { createApi } from './api.js';
import { connectEvents } from './events.js';
import { patienceMs, watchForSilence } from './heartbeat.js';
import { createListings } from './listing.js';
import { followMediaSession } from './mediasession.js';
import { createPreferences } from './preferences.js';
import { initialState, reduce } from './reducer.js';
import { createRouter } from './router.js';
import { listenForShortcuts } from './shortcuts.js';
import { keepShell } from './shell.js';
import { createSilence } from './silence.js';
import { createStore } from './store.js';
import { language, t } from './text.js';
import { Root } from './views/app.js';

const now = () => performance.now();
const store = createStore(reduce, initialState);
const router = createRouter(window);
const access = createAccess(window, () => {
  connection('connecting');
  events.renew();
});
const connection = (value) => store.dispatch({ type: 'connection', connection: value });

const api = createApi({
  token: () => access.token,
  fetch: window.fetch.bind(window),
  onUnreachable: () => events.doubt(),
  onRefused: () => {
    connection('refused');
    events.close();
  },
});
const listings = createListings(api);
const actions = createActions({ api, store, listings, router, now });

function onEvent(name, data) {
  const before = store.state;
  if (name === 'rows') return listings.changed(data.path, router.current.path);
  store.dispatch({ type: name, data, now: now() });
  const returned = name === 'snapshot' && before.connection !== 'live';
  if (returned && before.connection === 'lost') {
    store.dispatch({ type: 'announce', text: t('lost.back') });
  }
  const account = before.login?.state !== store.state.login?.state;
  if (account) listings.clear();
  else if (returned) listings.retry(router.current.path);
}

/**
 * The stream tells that it was lost, but not why; an answer to a request tells a refusal. At first
 * that is waited for: nobody who has to give an access code first reads of a player out of reach.
 */
async function onLost() {
  if (store.state.login) connection('lost');
  const { token } = access;
  await api.state().catch(() => {});
  if (store.state.connection === 'connecting' && token === access.token) connection('lost');
}

const events = connectEvents({
  open: () => new EventSource(api.eventsAddress()),
  onEvent,
  onLost,
});

watchForSilence({
  events,
  ping: () => api.ping(patienceMs),
  wanted: () => store.state.connection === 'live' && document.visibilityState === 'visible',
  onSilent: () => events.doubt(),
});

// A device that slept or changed its network has missed events without noticing.
window.addEventListener('online', () => events.renew());
window.addEventListener('offline', () => connection('lost'));
document.addEventListener('visibilitychange', () => {
  if (document.visibilityState === 'visible') events.renewIfOld();
});

window.addEventListener('unhandledrejection', () =>
  actions.toast({ kind: 'error', title: t('app.failed') }),
);

const preferences = createPreferences(window.localStorage);
const silence = createSilence({
  wanted: () => preferences.audible,
  createAudio: () => new Audio(),
  toAddress: (blob) => URL.createObjectURL(blob),
});
followMediaSession({
  session: navigator.mediaSession,
  Metadata: window.MediaMetadata,
  address: (url) => new URL(api.address(url), window.location.href).href,
  store,
  actions,
  now,
  silence,
});
window.addEventListener('load', () =>
  keepShell({ serviceWorker: navigator.serviceWorker, performance, location: window.location }),
);

document.documentElement.lang = language;
const services = {
  store,
  api,
  access,
  listings,
  actions,
  router,
  preferences,
  silence,
};
services.shortcuts = (target) => listenForShortcuts(target, actions, services.preferences);
render(h(Root, { services }), document.getElementById('app'));
