import { html } from '../html.js';
import { useEffect, useLayoutEffect, useRef } from '../../vendor/hooks.js';
import { useApp, useStore } from '../context.js';
import { shortTime } from '../format.js';
import { RowType } from '../rows.js';
import { t } from '../text.js';
import { CopyButton } from './controls.js';
import { Icon } from './icons.js';
import { ScreenAction } from './screen.js';

const knownKinds = ['error', 'info', 'skipped'];
const kindOf = (message) => (knownKinds.includes(message.kind) ? message.kind : 'info');
const buttonsOf = (message) => (message.rows ?? []).filter((row) => row.type !== RowType.message);

const asText = (message) =>
  [message.at, message.title, message.text, message.source].filter(Boolean).join('\n');

function Message({ message }) {
  const { actions } = useApp();
  const kind = kindOf(message);
  return html`<li class="message ${kind}">
    <${Icon} name=${kind} />
    <div class="message-text">
      <p class="message-head"><span>${t(`messages.kind.${kind}`)}</span>
        <time datetime=${message.at}>${shortTime(message.at)}</time></p>
      <p class="message-title">${message.title}</p>
      ${message.text && html`<p>${message.text}</p>`}
      <div class="message-buttons">
        ${buttonsOf(message).map(
          (row, i) => html`<${ScreenAction} key=${row.ref ?? i} row=${row}
          where=${{ ...actions.inDialog, close: () => {} }} />`,
        )}
        <${CopyButton} text=${asText(message)} label=${t('messages.copy')}
          name=${t('messages.copyOf', { title: message.title })} done=${t('messages.copied')} />
      </div>
    </div>
  </li>`;
}

/** The last messages, newest first, to read again at leisure. */
export function Messages({ level = 1 }) {
  const { actions } = useApp();
  const messages = useStore((state) => state.messages);
  const Title = `h${level}`;
  return html`<section class="messages" aria-labelledby="messages-title">
    <${Title} id="messages-title">${t('place.messages')}</${Title}>
    ${
      messages.length === 0
        ? html`<p class="quiet">${t('messages.none')}</p>`
        : html`<ul role="list" onMouseEnter=${actions.markRead} onFocusIn=${actions.markRead}>
          ${[...messages].reverse().map(
            (message) => html`
            <${Message} key=${message.id} message=${message} />`,
          )}
        </ul>`
    }
  </section>`;
}

/**
 * Marks messages as read when the list stands alone on the page, in front of the reader. What comes
 * then is said, but needs no note that would lie on top of the list.
 */
export function MessagesPlace() {
  const { actions, store } = useApp();
  const messages = useStore((state) => state.messages);
  const toasts = useStore((state) => state.toasts);
  useEffect(() => actions.markRead(), [messages]);
  useLayoutEffect(() => {
    for (const { id, title } of toasts.filter((toast) => toast.told)) {
      actions.closeToast(id);
      store.dispatch({ type: 'announce', text: title });
    }
  }, [toasts]);
  return html`<${Messages} />`;
}

const toastMs = 7000;

function Toast({ toast }) {
  const { actions } = useApp();
  const timer = useRef();
  const stop = () => clearTimeout(timer.current);
  const start = () => {
    stop();
    timer.current = setTimeout(() => actions.closeToast(toast.id), toastMs);
  };
  useEffect(() => {
    start();
    return stop;
  }, []);
  const kind = kindOf(toast);
  const screen = { title: toast.title, text: toast.text, rows: toast.rows ?? [], kind };
  return html`<div class="toast ${kind}" onMouseEnter=${stop} onMouseLeave=${start}
      onFocusIn=${stop} onFocusOut=${start}>
    <${Icon} name=${kind} />
    <div class="toast-text"><strong>${toast.title}</strong>
      ${toast.text && html`<p>${toast.text}</p>`}</div>
    ${
      buttonsOf(toast).length > 0 &&
      html`<button type="button" class="button quiet" onClick=${() => {
        actions.closeToast(toast.id);
        actions.showScreen(screen);
      }}>${t('toast.show')}</button>`
    }
    <button type="button" class="button ghost"
      aria-label=${t('toast.close', { title: toast.title })}
      onClick=${() => actions.closeToast(toast.id)}><${Icon} name="close" size=${20} /></button>
  </div>`;
}

/** Short notes that pass by. They stay while a hand or the focus is on them, and in the list. */
export function Toasts() {
  const toasts = useStore((state) => state.toasts);
  return html`<section class="toasts" aria-label=${t('toasts')} aria-live="polite">
    ${toasts.map((toast) => html`<${Toast} key=${toast.id} toast=${toast} />`)}
  </section>`;
}
