import { html } from '../html.js';
import { useState } from '../../vendor/hooks.js';
import { useApp, useOffline } from '../context.js';
import { t } from '../text.js';
import { Icon } from './icons.js';

/**
 * A button that acts on the player. Without a connection it stays where it is and focusable, says
 * why it rests, and does nothing; `unavailable` likewise. So focus never drops off the page. What it
 * asked for and has no answer yet shows when `busy`; it can be pressed again.
 */
export function Button({
  label,
  icon,
  iconSize,
  children,
  onClick,
  pressed,
  unavailable,
  busy,
  tip,
  kind = 'plain',
  ...rest
}) {
  const offline = useOffline();
  const resting = offline || unavailable;
  return html`<button type="button" class="button ${kind} ${busy ? 'busy' : ''}"
      aria-busy=${busy ? 'true' : null} aria-label=${label} title=${offline ? t('lost.control') : (tip ?? (children ? null : label))}
      aria-pressed=${pressed === undefined ? null : String(pressed)}
      aria-disabled=${resting ? 'true' : null}
      onClick=${resting ? null : onClick} ...${rest}>
    ${icon && html`<${Icon} name=${icon} size=${iconSize} />`}${children}
  </button>`;
}

/** A picture in a box of its final size, so that nothing moves when it arrives or fails. */
export function Picture({ url, sign, alt = '', eager = false }) {
  const { api } = useApp();
  const [failed, setFailed] = useState('');
  const shown = url && failed !== url;
  return html`<span class="picture">
    ${
      shown
        ? html`<img key=${url} src=${api.address(url)} alt=${alt} draggable=${false} decoding="async"
          loading=${eager ? 'eager' : 'lazy'} onError=${() => setFailed(url)} />`
        : html`<${Icon} name=${sign} />`
    }
  </span>`;
}

/** A native slider whose filled part follows its value. Its unit is the caller's. */
export function Slider({ value, max, label, text, ...rest }) {
  const share = max > 0 ? Math.min(1, value / max) : 0;
  return html`<input type="range" class="slider" min="0" max=${max} value=${value}
    aria-label=${label} aria-valuetext=${text} style=${{ '--filled': String(share) }} ...${rest} />`;
}

export async function copyText(text) {
  try {
    await navigator.clipboard.writeText(text);
    return true;
  } catch {
    return copyBySelection(text); // the clipboard is closed to plain http pages of other hosts
  }
}

function copyBySelection(text) {
  const area = document.createElement('textarea');
  area.value = text;
  area.className = 'off-screen';
  document.body.append(area);
  area.select();
  const copied = document.execCommand('copy');
  area.remove();
  return copied;
}

/** Copies `text` and says so in its own label for a moment. */
export function CopyButton({ text, label, name, done, kind }) {
  const { store } = useApp();
  const [copied, setCopied] = useState(false);
  const copy = async (event) => {
    const button = event.currentTarget;
    if (!(await copyText(text))) return;
    button.focus();
    setCopied(true);
    store.dispatch({ type: 'announce', text: done });
    setTimeout(() => setCopied(false), 2000);
  };
  return html`<button type="button" class="button ${kind ?? 'quiet'}" aria-label=${name}
      onClick=${copy}>
    <${Icon} name=${copied ? 'check' : 'copy'} size=${20} /><span>${copied ? done : label}</span>
  </button>`;
}
