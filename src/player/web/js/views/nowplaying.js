import { html } from '../html.js';
import { useApp, useStore } from '../context.js';
import { hasTrack, PlayState } from '../reducer.js';
import { t } from '../text.js';
import { Picture } from './controls.js';
import { Icon } from './icons.js';
import { Quality } from './quality.js';
import { Sleep } from './sleep.js';
import { Next, PlayPause, Progress, Rating, Seek, Stop, Transport, Volume } from './transport.js';

function artAlt(player) {
  if (!player.artwork) return '';
  return player.album
    ? t('player.art', { album: player.album })
    : t('player.artTitle', { title: player.title });
}

function Art({ player }) {
  const { api } = useApp();
  const url = hasTrack(player) ? player.artwork : '';
  return html`<div class="art">
    ${url && html`<img class="glow" key=${url} src=${api.address(url)} alt="" />`}
    <${Picture} url=${url} sign="note" alt=${url ? artAlt(player) : ''} eager />
  </div>`;
}

function Status({ player }) {
  if (player.error) {
    return html`<p class="now-error"><${Icon} name="error" size=${20} />
      <span><strong>${player.error.title}</strong> ${player.error.detail}</span></p>`;
  }
  if (player.state === PlayState.buffering)
    return html`<p class="now-state">${t('player.buffering')}</p>`;
  return null;
}

function Words({ player, level, children }) {
  const some = hasTrack(player);
  const Title = `h${level}`;
  return html`<div class="now-text">
    <${Title} class="now-title">${some ? player.title || '…' : t('player.none')}</${Title}>
    ${
      some
        ? html`<p class="now-by">${player.artist || '\u00a0'}</p>
      <p class="now-album">${player.album || '\u00a0'}</p>`
        : html`<p class="now-hint">${t('player.noneText')}</p>`
    }
    ${children}
  </div>`;
}

/** The player at its largest: the picture first, then what it is, then what can be done. */
export function NowPlaying({ level = 1 }) {
  const player = useStore((state) => state.player) ?? { state: 0 };
  return html`<section class="now" aria-label=${t('place.now')}>
    <${Art} player=${player} />
    <${Words} player=${player} level=${level}>
      <div class="now-line"><${Quality} /><${Sleep} /></div></${Words}>
    <${Status} player=${player} />
    <${Seek} />
    <${Transport} />
    <div class="now-more">
      <div class="ratings" role="group" aria-label=${t('player.rating')}>
        <${Rating} which="down" /><${Rating} which="up" /></div>
      <${Stop} />
      <${Volume} />
    </div>
  </section>`;
}

/** A screen on the wall, or a kiosk: to be seen and hit from afar, and nothing to get lost in. */
export function Wall() {
  const { actions } = useApp();
  const player = useStore((state) => state.player) ?? { state: 0 };
  const leave = (event) => {
    event.preventDefault();
    actions.goTo('now');
  };
  return html`<section class="now wall" aria-label=${t('place.now')}>
    <${Art} player=${player} />
    <div class="wall-side">
      <${Words} player=${player} level=${1} />
      <${Status} player=${player} />
      <${Seek} />
      <${Transport} />
      <div class="now-more">
        <div class="ratings" role="group" aria-label=${t('player.rating')}>
          <${Rating} which="down" /><${Rating} which="up" /></div>
        <a class="button quiet wall-leave" href="#/now" onClick=${leave}>${t('wall.leave')}</a>
      </div>
    </div>
  </section>`;
}

/** The player at its smallest, above the tabs of a narrow page. */
export function PlayerBar() {
  const { actions } = useApp();
  const player = useStore((state) => state.player);
  if (!hasTrack(player)) return null;
  const show = (event) => {
    event.preventDefault();
    actions.goTo('now');
  };
  const name = `${t('player.details')}: ${player.title}, ${player.artist ?? ''}`;
  return html`<section class="bar" aria-label=${t('player')}>
    <a class="bar-main" href="#/now" onClick=${show} aria-label=${name}>
      <${Picture} url=${player.artwork} sign="note" eager />
      <span class="row-text">
        <span class="row-title">${player.title}</span>${' '}
        <span class="row-by">${player.artist}</span>
      </span>
    </a>
    <span class="bar-extra"><${Rating} which="up" /></span>
    <${PlayPause} kind="main small" iconSize=${22} />
    <${Next} />
    <${Progress} />
  </section>`;
}
