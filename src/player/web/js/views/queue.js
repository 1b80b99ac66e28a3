import { html } from '../html.js';
import { useEffect, useRef, useState } from '../../vendor/hooks.js';
import { useApp, useOffline, useStore } from '../context.js';
import { shortTime } from '../format.js';
import { modeParts, shuffleSupported } from '../modes.js';
import { artistOf, pictureOf, signOf, titleOf } from '../rows.js';
import { t } from '../text.js';
import { Picture } from './controls.js';
import { Icon } from './icons.js';

/** Tracks before the present one that show without asking. */
const shownAtFirst = 4;

/** What the player tells of its queue, asked for again whenever that has changed. */
function useQueue() {
  const { api } = useApp();
  const version = useStore((state) => state.queueVersion);
  const offline = useOffline();
  const [queue, setQueue] = useState(null);
  useEffect(() => {
    let stale = false;
    if (!offline)
      api.queue().then(
        (answer) => !stale && setQueue(answer),
        () => {}, // the connection's loss is told elsewhere, and its return asks again
      );
    return () => {
      stale = true;
    };
  }, [version, offline]);
  return queue;
}

const wordsOf = (row) => [titleOf(row), artistOf(row)].filter(Boolean).join(', ');

function Inside({ row, children }) {
  return html`<${Picture} url=${pictureOf(row)} sign=${signOf(row)} />
    <span class="row-text"><span class="row-title">${titleOf(row)}</span>${' '}
      ${artistOf(row) && html`<span class="row-by">${artistOf(row)}</span>`}</span>${' '}
    ${children}`;
}

function PressRow({ row, name, kind, onClick, children }) {
  const rest = useOffline()
    ? { 'aria-disabled': 'true', title: t('lost.control') }
    : { onClick };
  return html`<li class="row ${kind}">
    <button type="button" class="row-main" aria-label=${name} ...${rest}>
      <${Inside} row=${row}>${children}</${Inside}></button>
  </li>`;
}

function PlayedRow({ entry }) {
  const { actions } = useApp();
  const { row, at } = entry;
  const starting = useStore((state) => state.starting) === row.ref;
  const time = shortTime(at);
  return html`<${PressRow} row=${row} kind="played" onClick=${() => actions.play(row)}
      name=${t('queue.again', { title: wordsOf(row), time })}>
    ${
      starting
        ? html`<span class="spinner" aria-hidden="true"></span>`
        : html`<time class="row-time" datetime=${at}>${time}</time>`
    }
  </${PressRow}>`;
}

const CurrentRow = ({ row }) => html`<li class="row current" aria-current="true">
  <div class="row-main still"><${Inside} row=${row}>
    <span class="row-sign"><span class="bars" aria-hidden="true"><i></i><i></i><i></i></span>
      <span class="off-screen">${t('queue.now')}</span></span></${Inside}></div>
</li>`;

function NextRow({ row }) {
  const { actions } = useApp();
  return html`<${PressRow} row=${row} kind="next" onClick=${actions.next}
      name=${t('queue.skipTo', { title: wordsOf(row) })}>
    <span class="row-time">${t('queue.next')}</span>
  </${PressRow}>`;
}

/** Where the music comes from, and how it goes on, as far as that is certain. */
function Origin({ queue }) {
  const shuffles = useStore(
    ({ player }) => modeParts(player?.mode).shuffle && shuffleSupported(player?.playModes ?? {}),
  );
  const { from, endless } = queue;
  if (!queue.current || !(from || shuffles)) return null;
  return html`<div class="queue-origin">
    ${from && html`<p>${t('queue.from')} <strong>${titleOf(from)}</strong></p>`}
    ${
      endless &&
      html`<p class="mark-line"><${Icon} name="station" size=${16} />
      <span>${t('queue.endless')}</span></p>`
    }
    ${
      shuffles &&
      html`<p class="mark-line"><${Icon} name="shuffle" size=${16} />
      <span>${t('queue.shuffled')}</span></p>`
    }
  </div>`;
}

/** How many rows of the past show; the rest unfolds, and the focus goes to the first of it. */
function Played({ played, all, onAll }) {
  const hidden = all ? 0 : Math.max(0, played.length - shownAtFirst);
  return html`${
    hidden > 0 &&
    html`<li class="row earlier" key="earlier">
    <button type="button" class="button quiet" onClick=${onAll}>
      ${t('queue.earlier', { count: hidden })}</button></li>`
  }
  ${played
    .slice(hidden)
    .map((entry) => html`<${PlayedRow} key=${entry.at + entry.row.ref} entry=${entry} />`)}`;
}

function Rows({ queue }) {
  const list = useRef();
  const [all, setAll] = useState(false);
  useEffect(() => {
    if (all) list.current.querySelector('.played button')?.focus();
  }, [all]);
  const { played, current, next } = queue;
  return html`<ul class="rows list compact" role="list" aria-label=${t('place.queue')} ref=${list}>
    <${Played} played=${played} all=${all} onAll=${() => setAll(true)} />
    ${current && html`<${CurrentRow} row=${current} />`}
    ${next && html`<${NextRow} row=${next} />`}
  </ul>`;
}

const Nothing = () => html`<p class="quiet">${t('queue.none')}</p>`;

/** What has played, what plays, and what is known to follow: the player knows no more than that. */
export function Queue({ level = 1 }) {
  const queue = useQueue();
  const Title = `h${level}`;
  const some = queue && (queue.current || queue.played.length > 0);
  return html`<section class="queue" aria-labelledby="queue-title">
    <${Title} id="queue-title">${t('place.queue')}</${Title}>
    ${queue && !some && html`<${Nothing} />`}
    ${some && html`<${Origin} queue=${queue} /><${Rows} queue=${queue} />`}
    ${
      queue?.current &&
      html`<p class="queue-rest quiet">${t(queue.next ? 'queue.more' : 'queue.unknown')}</p>`
    }
  </section>`;
}
