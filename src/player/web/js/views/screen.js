import { html } from '../html.js';
import { useLayoutEffect, useRef, useState } from '../../vendor/hooks.js';
import { useApp } from '../context.js';
import { moveFocus } from '../focus.js';
import { linkOf, RowType, titleOf } from '../rows.js';
import { shortTime } from '../format.js';
import { t } from '../text.js';
import { Button } from './controls.js';
import { Icon } from './icons.js';

/** What an answer does when the reader has left the place where its button was pressed. */
const elsewhere = (actions) => ({ close: () => {}, open: actions.showResult });

/**
 * One action or link of the service, as a button or a link with the service's words. While its
 * answer is awaited it says so and rests; a failure is told where it was pressed, or as a note when
 * the reader has left that place, from which no late answer leads away.
 */
export function ScreenAction({ row, where, kind = 'second', onError }) {
  const { actions } = useApp();
  const [working, setWorking] = useState(false);
  const left = useRef(false);
  useLayoutEffect(() => () => {
    left.current = true;
  }, []);
  if (row.type === RowType.link) {
    const link = linkOf(row);
    if (!link) return null;
    return html`<a class="button ${kind}" href=${link} target="_blank" rel="noopener noreferrer"
        aria-label=${t('row.link', { title: titleOf(row) })}>
      <span>${titleOf(row)}</span><${Icon} name="external" size=${20} />
    </a>`;
  }
  const press = async () => {
    setWorking(true);
    const there = () => (left.current ? elsewhere(actions) : where);
    const wherever = { close: () => there().close(), open: (path) => there().open(path) };
    await actions.activate(row, wherever, (error) =>
      (onError && !left.current ? onError : actions.reportError)(error),
    );
    setWorking(false);
  };
  return html`<${Button} kind=${kind} onClick=${press} unavailable=${working}>
    <span>${working ? t('screen.working') : titleOf(row)}</span>
  </${Button}>`;
}

function Details({ screen }) {
  const lines = [
    ['screen.time', screen.at && shortTime(screen.at)],
    ['screen.code', screen.status || ''],
    ['screen.source', screen.source],
    ['screen.request', screen.request?.replace('urn:uuid:', '')],
  ].filter(([, value]) => value);
  if (!lines.length) return null;
  return html`<details class="details">
    <summary>${t('screen.details')}</summary>
    <dl>${lines.map(([id, value]) => html`<dt>${t(id)}</dt><dd>${value}</dd>`)}</dl>
  </details>`;
}

/** A screen with actions leads out by these; any other gets a plain button to close it. */
const hasOwnButtons = (screen) =>
  (screen.rows ?? []).some((row) => row.type === RowType.action);

/**
 * A message of the service: its headline, its explanation, and its buttons in its order. Focus goes
 * to the headline, so that it is what is read first. `where` closes and opens (see actions.js).
 */
export function Screen({ screen, where, level = 1 }) {
  const Title = `h${level}`;
  const heading = useRef();
  const [problem, setProblem] = useState(null);
  useLayoutEffect(() => moveFocus(heading.current), [screen]);
  const buttons = (screen.rows ?? []).filter((row) => row.type !== RowType.message);
  const further = (screen.rows ?? []).slice(1).filter((row) => row.type === RowType.message);
  return html`<article class="screen">
    <span class="screen-sign">
      <${Icon} name=${screen.kind === 'info' ? 'info' : 'error'} size=${32} /></span>
    <${Title} class="screen-title" tabindex="-1" autofocus ref=${heading}>${screen.title}</${Title}>
    ${screen.text && html`<p class="screen-text">${screen.text}</p>`}
    ${further.map(
      (row) => html`<p class="screen-text">
      ${row.title && html`<strong>${row.title} </strong>`}${row.longDescription}</p>`,
    )}
    <div class="screen-buttons">
      ${buttons.map(
        (row, i) => html`<${ScreenAction} key=${row.ref ?? i} row=${row} where=${where}
        onError=${setProblem} kind=${i === 0 ? 'primary' : 'second'} />`,
      )}
      ${
        !hasOwnButtons(screen) &&
        html`
        <button type="button" class="button ${buttons.length ? 'second' : 'primary'}"
          onClick=${where.close}><span>${t('screen.close')}</span></button>`
      }
    </div>
    <div role="alert">${
      problem &&
      html`<p class="screen-problem">
      <strong>${problem.title}</strong> ${problem.detail}</p>`
    }</div>
    <${Details} screen=${screen} />
  </article>`;
}

/** The message in front of everything else. Escape closes it; focus returns to where it was. */
export function ScreenDialog({ screen }) {
  const { actions } = useApp();
  const dialog = useRef();
  useLayoutEffect(() => {
    const element = dialog.current;
    if (!element.open) element.showModal();
    return () => element.close();
  }, []);
  return html`<dialog class="dialog" ref=${dialog} aria-label=${screen.title}
      onCancel=${(event) => {
        event.preventDefault();
        actions.inDialog.close();
      }}>
    ${
      hasOwnButtons(screen) &&
      html`<button type="button" class="button ghost dialog-close" aria-label=${t('screen.close')}
        onClick=${actions.inDialog.close}><${Icon} name="close" /></button>`
    }
    <${Screen} screen=${screen} where=${actions.inDialog} level=${2} />
  </dialog>`;
}
