import { html } from '../html.js';
import { useApp, useOffline, useStore } from '../context.js';
import { clock } from '../format.js';
import {
  albumOf,
  artistOf,
  durationOf,
  isRatable,
  linkOf,
  pictureOf,
  RowType,
  signOf,
  titleOf,
} from '../rows.js';
import { t } from '../text.js';
import { Picture } from './controls.js';
import { Icon } from './icons.js';
import { ScreenAction } from './screen.js';

/** The name of a row's button: what pressing it does, then what the row shows, in that order. */
function nameOf(does, row, line) {
  const shown = [titleOf(row), line, clock(durationOf(row) || NaN)].filter(Boolean).join(', ');
  return t(does, { title: shown });
}

/** The track that plays, as far as a row can tell. */
const isCurrent = (row, player) =>
  row.type === RowType.playable &&
  player?.state > 0 &&
  player.title === titleOf(row) &&
  player.artist === artistOf(row);

/** The artist and the album, each unless the heading says it already. `record` is the opened row. */
function second(row, layout, record) {
  const album = layout === 'list' && albumOf(row) !== titleOf(record) ? albumOf(row) : '';
  const artist = record && artistOf(row) === artistOf(record) ? '' : artistOf(row);
  return [artist, album].filter(Boolean).join(' · ');
}

function Texts({ row, line }) {
  return html`<span class="row-text">
    <span class="row-title">${titleOf(row)}</span>${' '}
    ${line && html`<span class="row-by">${line}</span>`}
  </span>`;
}

function PlaySign({ starting, current }) {
  if (starting) return html`<span class="spinner" aria-hidden="true"></span>`;
  if (current) return html`<span class="bars" aria-hidden="true"><i></i><i></i><i></i></span>`;
  return html`<${Icon} name="play" size=${20} />`;
}

/** What is seen of a row, whatever pressing it does. */
function Inside({ row, layout, number, line, starting, current }) {
  const time = durationOf(row);
  const opens = Boolean(row.openable);
  const plays = Boolean(row.playable);
  return html`
    ${
      number
        ? html`<span class="row-number" data-number=${number}></span>`
        : layout !== 'tiles' && html`<${Picture} url=${pictureOf(row)} sign=${signOf(row)} />`
    }
    <${Texts} row=${row} line=${line} />${' '}
    ${time > 0 && html`<span class="row-time">${clock(time)}</span>`}
    ${
      layout !== 'grid' &&
      opens &&
      !plays &&
      html`<span class="row-sign">
      <${Icon} name="open" size=${20} /></span>`
    }
    ${
      !opens &&
      plays &&
      html`<span class="row-sign play-sign">
      <${PlaySign} starting=${starting} current=${current} /></span>`
    }`;
}

/** A row with one target to open it, one to play it, or both side by side. */
function MusicRow({ row, layout, number, record, memo }) {
  const { actions } = useApp();
  const offline = useOffline();
  const starting = useStore((state) => state.starting) === row.ref && Boolean(row.ref);
  const current = useStore((state) => isCurrent(row, state.player));
  const opens = Boolean(row.openable);
  const plays = Boolean(row.playable);
  const rest = offline ? { 'aria-disabled': 'true', title: t('lost.control') } : {};

  const play = () => actions.play(row);
  const open = () => {
    memo();
    actions.open(row);
  };
  const line = second(row, layout, record);
  const inside = html`<${Inside} ...${{ row, layout, number, line, starting, current }} />`;

  if (!opens && !plays) return html`<div class="row-main still">${inside}</div>`;
  return html`
    <button type="button" class="row-main" data-focus aria-current=${current ? 'true' : null}
        aria-label=${nameOf(opens ? 'row.open' : 'row.play', row, line)}
        onClick=${opens ? open : play} ...${rest}>
      ${inside}
    </button>
    ${
      opens &&
      plays &&
      html`<button type="button" class="row-play" aria-label=${nameOf('row.play', row, line)}
        onClick=${play} ...${rest}>
      <${PlaySign} starting=${starting} />
    </button>`
    }
    ${
      layout === 'list' &&
      isRatable(row) &&
      html`<button type="button" class="button ghost row-menu"
        aria-label=${t('row.menu', { title: titleOf(row) })} aria-haspopup="dialog"
        onClick=${() => actions.showRowMenu(row)}><${Icon} name="more" size=${20} /></button>`
    }`;
}

const TextRow = ({ row }) => html`<div class="row-message">
  ${row.title && html`<strong>${row.title}</strong>`}
  ${row.longDescription && html`<p>${row.longDescription}</p>`}
</div>`;

/** What stands inside one list item. `memo` hears of the press that leaves the list. */
export function RowContent(props) {
  const { row } = props;
  const { actions } = useApp();
  if (row.type === RowType.message) return html`<${TextRow} row=${row} />`;
  if (row.type === RowType.action || (row.type === RowType.link && linkOf(row))) {
    return html`<div class="row-action">
      <${ScreenAction} row=${row} where=${actions.inBrowse} /></div>`;
  }
  return html`<${MusicRow} ...${props} />`;
}
