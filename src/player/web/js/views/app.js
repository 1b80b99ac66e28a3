import { html } from '../html.js';
import {
  useEffect,
  useErrorBoundary,
  useLayoutEffect,
  useReducer,
  useRef,
  useState,
} from '../../vendor/hooks.js';
import { App, useApp, useMedia, useStore } from '../context.js';
import { hasTrack, unreadCount } from '../reducer.js';
import { places } from '../router.js';
import { t } from '../text.js';
import { Browse } from './browse.js';
import { Aside } from './aside.js';
import { Header } from './header.js';
import { Icon } from './icons.js';
import { Login } from './login.js';
import { MessagesPlace, Toasts } from './messages.js';
import { NowPlaying, PlayerBar, Wall } from './nowplaying.js';
import { Queue } from './queue.js';
import { RowMenu } from './rowmenu.js';
import { ScreenDialog } from './screen.js';
import { Settings } from './settings.js';
import { TokenForm } from './token.js';

const signs = { browse: 'browse', now: 'note', queue: 'queue', messages: 'messages' };

function Tabs({ place }) {
  const { actions } = useApp();
  const unread = useStore(unreadCount);
  const go = (target) => (event) => {
    event.preventDefault();
    actions.goTo(target);
  };
  return html`<nav class="tabs" aria-label=${t('places')}>
    ${places.map(
      (name) => html`<a key=${name} href=${`#/${name}`} onClick=${go(name)}
        aria-current=${name === place ? 'page' : null}>
      <span class="tab-sign"><${Icon} name=${signs[name]} />
        ${
          name === 'messages' &&
          unread > 0 &&
          html`
          <b class="badge" aria-hidden="true">${unread}</b>`
        }</span>
      <span>${t(`place.${name}`)}</span>
      ${
        name === 'messages' &&
        unread > 0 &&
        html`
        <span class="off-screen">, ${t('place.unread', { count: unread })}</span>`
      }
    </a>`,
    )}
  </nav>`;
}

function LostBanner() {
  const lost = useStore((state) => state.connection === 'lost');
  return html`<div class="banner-place" role="alert">
    ${
      lost &&
      html`<p class="banner"><span class="spinner" aria-hidden="true"></span>
      <span><strong>${t('lost.title')}</strong> ${t('lost.text')}</span></p>`
    }
  </div>`;
}

/** Says what has changed to those who listen instead of looking; also keeps the window's title. */
function Announcer() {
  const { store } = useApp();
  const player = useStore((state) => state.player);
  const text = useStore((state) => state.announcement);
  const title = hasTrack(player) ? player.title : '';
  const first = useRef(true);
  useEffect(() => {
    document.title = title ? `${title} · ${t('app.name')}` : t('app.name');
    if (title && !first.current) {
      store.dispatch({
        type: 'announce',
        text: player.artist
          ? t('player.announceBy', { title, by: player.artist })
          : t('player.announce', { title }),
      });
    }
    first.current = false;
  }, [title, player?.artist]);
  return html`<p class="off-screen" role="status">${text}</p>`;
}

/** What fills a narrow page. */
const alone = { browse: Browse, now: NowPlaying, queue: Queue, messages: MessagesPlace };

function Shell({ route }) {
  const wide = useMedia('(min-width: 60rem)');
  const Place = alone[wide ? 'browse' : route.place] ?? Browse;
  return html`
    <main class="main" data-scroller id="main" key=${wide ? 'wide' : route.place}>
      <${Place} route=${route} /></main>
    ${wide && html`<${Aside} place=${route.place} />`}
    ${!wide && route.place !== 'now' && html`<${PlayerBar} />`}
    ${!wide && html`<${Tabs} place=${route.place} />`}`;
}

/** What the page says when it opened without its player: kept by its service worker. */
const OutOfReach = () => html`<main class="main alone"><div class="notice">
  <span class="screen-sign"><${Icon} name="error" size=${32} /></span>
  <h1>${t('lost.start')}</h1>
  <p>${t('lost.startText')}</p>
</div></main>`;

function Content({ route }) {
  const connection = useStore((state) => state.connection);
  const login = useStore((state) => state.login);
  if (connection === 'refused') return html`<main class="main alone"><${TokenForm} /></main>`;
  if (!login && connection === 'lost') return html`<${OutOfReach} />`;
  if (!login)
    return html`<main class="main alone" aria-busy="true">
      <p class="notice">${t('app.loading')}</p></main>`;
  if (login.state !== 'loggedIn') return html`<main class="main alone"><${Login} /></main>`;
  if (route.place === 'wall') return html`<main class="main alone"><${Wall} /></main>`;
  return html`<${Shell} route=${route} />`;
}

/** Our own fault, told plainly: the music plays on, only the page is broken. */
const Fault = () => html`<main class="main alone"><div class="notice" role="alert">
  <h1>${t('app.failed')}</h1>
  <button type="button" class="button primary" onClick=${() => window.location.reload()}>
    <span>${t('app.reload')}</span></button>
</div></main>`;

function Page() {
  const { router, shortcuts } = useApp();
  const [fault] = useErrorBoundary();
  const [, render] = useReducer((n) => n + 1, 0);
  const [settings, setSettings] = useState(false);
  const screen = useStore((state) => state.screen);
  const rowMenu = useStore((state) => state.rowMenu);
  const signedIn = useStore((state) => state.login?.state === 'loggedIn');
  useLayoutEffect(() => router.subscribe(render), [router]);
  useLayoutEffect(() => shortcuts(window), []);
  const route = router.current;
  if (fault) return html`<${Fault} />`;
  const onWall = signedIn && route.place === 'wall';
  return html`<div class="app ${signedIn ? '' : 'signed-out'} ${onWall ? 'on-wall' : ''}">
    <${LostBanner} />
    ${!onWall && html`<${Header} route=${route} signedIn=${signedIn} onSettings=${() => setSettings(true)} />`}
    <${Content} route=${route} />
    <${Toasts} />
    <${Announcer} />
    ${settings && html`<${Settings} onClose=${() => setSettings(false)} />`}
    ${rowMenu && html`<${RowMenu} row=${rowMenu} />`}
    ${screen && html`<${ScreenDialog} screen=${screen} key=${screen.at + screen.title} />`}
  </div>`;
}

export const Root = ({ services }) =>
  html`<${App.Provider} value=${services}><${Page} /></${App.Provider}>`;
