import { html } from '../html.js';
import { useLayoutEffect, useRef, useState } from '../../vendor/hooks.js';
import { useApp, useNow, useStore } from '../context.js';
import { remaining } from '../format.js';
import { hasTrack } from '../reducer.js';
import { t } from '../text.js';
import { Button } from './controls.js';
import { Icon } from './icons.js';

const choices = [15, 30, 45, 60, 90];

function SleepDialog({ onClose }) {
  const { actions } = useApp();
  const set = useStore((state) => Boolean(state.player?.sleep?.at));
  const [finish, setFinish] = useState(true);
  const dialog = useRef();
  useLayoutEffect(() => {
    const element = dialog.current;
    element.showModal();
    return () => element.close();
  }, []);
  const choose = (minutes) => () => {
    onClose();
    actions.setSleep(minutes, finish);
  };
  return html`<dialog class="dialog sleep-dialog" ref=${dialog} aria-labelledby="sleep-title"
      onCancel=${(event) => {
        event.preventDefault();
        onClose();
      }}>
    <header class="dialog-head"><h2 id="sleep-title">${t('sleep')}</h2>
      <button type="button" class="button ghost" aria-label=${t('screen.close')} onClick=${onClose}>
        <${Icon} name="close" /></button></header>
    <p class="quiet">${t('sleep.text')}</p>
    <fieldset class="choice"><legend>${t('sleep.after')}</legend>
      <div class="sleep-choices">${choices.map(
        (count) => html`<${Button} key=${count} kind="second" onClick=${choose(count)}>
        <span>${t('sleep.choice', { count })}</span></${Button}>`,
      )}</div>
      <label><input type="checkbox" checked=${finish}
        onChange=${(event) => setFinish(event.currentTarget.checked)} />
        <span>${t('sleep.finish')}</span></label>
      ${
        set &&
        html`<${Button} kind="primary" onClick=${choose(0)}>
        <span>${t('sleep.off')}</span></${Button}>`
      }
    </fieldset>
  </dialog>`;
}

/** The player tells when its time comes by its own clock; the page counts from when it was told. */
function useTimeLeft() {
  const endsAt = useStore((state) => state.player?.sleepEndsAt ?? 0);
  const now = useNow(endsAt > 0, 5000);
  return endsAt > 0 ? remaining(endsAt - now) : '';
}

/** The sleep timer: what is left of it, and a press that sets it while there is something to end. */
export function Sleep() {
  const left = useTimeLeft();
  const some = useStore((state) => hasTrack(state.player));
  const [open, setOpen] = useState(false);
  if (!some && !left) return null;
  const label = left ? t('sleep.set', { time: left }) : t('sleep');
  return html`<${Button} kind=${`quality-label ${left ? 'on' : ''}`} label=${label} tip=${t('sleep')}
      icon="sleep" iconSize=${16} aria-haspopup="dialog" onClick=${() => setOpen(true)}>
      ${left && html`<span>${left}</span>`}</${Button}>
    ${open && html`<${SleepDialog} onClose=${() => setOpen(false)} />`}`;
}
