import { html } from '../html.js';
import { useLayoutEffect, useRef, useState } from '../../vendor/hooks.js';
import { qualityText, stagesOf } from '../audio.js';
import { useStore } from '../context.js';
import { PlayState } from '../reducer.js';
import { t } from '../text.js';
import { Icon } from './icons.js';

const coming = [PlayState.buffering, PlayState.playing];

const signs = { source: 'note', decoder: 'decoder', volume: 'volume', output: 'output' };

const Stage = ({ stage }) => html`<li class="stage">
  <span class="stage-sign"><${Icon} name=${signs[stage.id]} size=${20} /></span>
  <div><p class="stage-name">${t(`audio.stage.${stage.id}`)}</p>
    <p class="stage-title">${stage.title}</p>
    ${stage.lines.map((line) => html`<p class="stage-line">${line}</p>`)}</div>
</li>`;

/** The way of the sound from the service to the ear, stage by stage. */
function PathDialog({ onClose }) {
  const player = useStore((state) => state.player);
  const dialog = useRef();
  useLayoutEffect(() => {
    const element = dialog.current;
    element.showModal();
    return () => element.close();
  }, []);
  const stages = stagesOf(player);
  return html`<dialog class="dialog path-dialog" ref=${dialog} aria-labelledby="path-title"
      onCancel=${(event) => {
        event.preventDefault();
        onClose();
      }}>
    <header class="dialog-head"><h2 id="path-title">${t('audio.path')}</h2>
      <button type="button" class="button ghost" aria-label=${t('screen.close')} onClick=${onClose}>
        <${Icon} name="close" /></button></header>
    ${
      stages.length
        ? html`<ol class="stages" role="list">
      ${stages.map((stage) => html`<${Stage} key=${stage.id} stage=${stage} />`)}</ol>`
        : html`<p class="quiet">${t('audio.unknown')}</p>`
    }
  </dialog>`;
}

/**
 * What the sound is; a press shows the way that it takes. Its place stays while nothing sounds, and
 * the label itself from track to track, so that the focus can stay on it.
 */
export function Quality() {
  const known = useStore((state) => qualityText(state.player?.audio));
  const comes = useStore(({ player }) => coming.includes(player?.state));
  const text = known || (comes ? '…' : '');
  const [open, setOpen] = useState(false);
  return html`<div class="quality">
    ${
      text &&
      html`<button type="button" class="button quality-label" aria-haspopup="dialog"
        aria-label=${t('audio.label', { quality: known || t('audio.notYet') })} title=${t('audio.path')}
        onClick=${() => setOpen(true)}>
      <${Icon} name="wave" size=${16} /><span>${text}</span></button>`
    }
    ${open && html`<${PathDialog} onClose=${() => setOpen(false)} />`}
  </div>`;
}
