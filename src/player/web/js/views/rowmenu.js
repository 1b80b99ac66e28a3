import { html } from '../html.js';
import { useLayoutEffect, useRef } from '../../vendor/hooks.js';
import { useApp } from '../context.js';
import { artistOf, pictureOf, signOf, titleOf } from '../rows.js';
import { t } from '../text.js';
import { Button, Picture } from './controls.js';
import { Icon } from './icons.js';

/** What else can be done with a row. Each choice closes the menu; its answer shows as a note. */
export function RowMenu({ row }) {
  const { actions } = useApp();
  const dialog = useRef();
  useLayoutEffect(() => {
    const element = dialog.current;
    element.showModal();
    return () => element.close();
  }, []);
  const close = () => actions.showRowMenu(null);
  const choose = (does) => () => {
    close();
    does();
  };
  return html`<dialog class="dialog row-menu-dialog" ref=${dialog} aria-labelledby="row-menu-title"
      onCancel=${(event) => {
        event.preventDefault();
        close();
      }}>
    <header class="dialog-head">
      <${Picture} url=${pictureOf(row)} sign=${signOf(row)} />
      <div class="row-text"><h2 id="row-menu-title">${titleOf(row)}</h2>
        <p class="quiet">${artistOf(row)}</p></div>
      <button type="button" class="button ghost" aria-label=${t('screen.close')} onClick=${close}>
        <${Icon} name="close" /></button>
    </header>
    <div class="row-menu-choices">
      ${
        row.playable &&
        html`<${Button} icon="play" iconSize=${20} onClick=${choose(() => actions.play(row))}>
        <span>${t('play')}</span></${Button}>`
      }
      <${Button} icon="up" iconSize=${20} onClick=${choose(() => actions.rateRow(row, true))}>
        <span>${t('player.like')}</span></${Button}>
      <${Button} icon="down" iconSize=${20} onClick=${choose(() => actions.rateRow(row, false))}>
        <span>${t('player.dislike')}</span></${Button}>
    </div>
  </dialog>`;
}
