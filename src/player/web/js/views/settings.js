import { html } from '../html.js';
import { useEffect, useLayoutEffect, useRef, useState } from '../../vendor/hooks.js';
import { useApp, useStore } from '../context.js';
import { t } from '../text.js';
import { Icon } from './icons.js';
import { Button } from './controls.js';

const keys = [
  ['/', 'search'],
  ['p', 'pause'],
  ['n', 'next'],
  ['b', 'previous'],
];

function Outputs() {
  const { api, actions } = useApp();
  const [outputs, setOutputs] = useState(null);
  const [failed, setFailed] = useState(false);
  const load = () =>
    api.outputs().then(
      (answer) => setOutputs(answer.outputs ?? []),
      () => setFailed(true),
    );
  useEffect(() => {
    load();
  }, []);
  const choose = async (id) => {
    await actions.selectOutput(id);
    await load();
  };
  return html`<fieldset class="choice">
    <legend>${t('settings.output')}</legend>
    ${failed && html`<p>${t('settings.outputsFailed')}</p>`}
    ${outputs?.length === 0 && html`<p>${t('settings.outputsNone')}</p>`}
    ${outputs?.map(
      (output) => html`<label key=${output.id}>
      <input type="radio" name="output" value=${output.id} checked=${Boolean(output.selected)}
        onChange=${() => choose(output.id)} /><span>${output.name}</span></label>`,
    )}
  </fieldset>`;
}

function Shortcuts() {
  const { preferences } = useApp();
  const [on, setOn] = useState(preferences.shortcuts);
  const toggle = (event) => {
    preferences.shortcuts = event.currentTarget.checked;
    setOn(preferences.shortcuts);
  };
  return html`<fieldset class="choice">
    <legend>${t('settings.keys')}</legend>
    <label><input type="checkbox" checked=${on} onChange=${toggle} />
      <span>${t('settings.keysUse')}</span></label>
    <dl class="keys">${keys.map(
      ([key, id]) => html`<div key=${key}>
      <dt><kbd>${key}</kbd></dt><dd>${t(`settings.key.${id}`)}</dd></div>`,
    )}</dl>
  </fieldset>`;
}

/** Lock screens and media keys heed pages that sound; see silence.js. */
function LockScreen() {
  const { preferences, silence } = useApp();
  const [on, setOn] = useState(preferences.audible);
  if (!navigator.mediaSession) return null;
  const toggle = (event) => {
    preferences.audible = event.currentTarget.checked;
    setOn(preferences.audible);
    silence.apply();
  };
  return html`<fieldset class="choice">
    <legend>${t('settings.lock')}</legend>
    <label><input type="checkbox" checked=${on} onChange=${toggle} aria-describedby="lock-text" />
      <span>${t('settings.lockUse')}</span></label>
    <p class="quiet" id="lock-text">${t('settings.lockText')}</p>
  </fieldset>`;
}

export function Settings({ onClose }) {
  const { actions } = useApp();
  const signedIn = useStore((state) => state.login?.state === 'loggedIn');
  const dialog = useRef();
  useLayoutEffect(() => {
    const element = dialog.current;
    element.showModal();
    return () => element.close();
  }, []);
  const wall = () => {
    onClose();
    actions.goTo('wall');
  };
  const logout = async () => {
    onClose();
    await actions.logout();
  };
  return html`<dialog class="dialog settings" ref=${dialog} aria-labelledby="settings-title"
      onCancel=${(event) => {
        event.preventDefault();
        onClose();
      }}>
    <header class="dialog-head"><h2 id="settings-title">${t('settings')}</h2>
      <button type="button" class="button ghost" aria-label=${t('screen.close')} onClick=${onClose}>
        <${Icon} name="close" /></button></header>
    <${Outputs} />
    <${Shortcuts} />
    <${LockScreen} />
    ${
      signedIn &&
      html`<div class="choice">
      <p class="quiet">${t('settings.wallText')}</p>
      <${Button} kind="second" onClick=${wall}><span>${t('settings.wall')}</span></${Button}></div>`
    }
    ${
      signedIn &&
      html`<div class="choice">
      <p class="quiet">${t('settings.logoutText')}</p>
      <${Button} kind="second" onClick=${logout}>
        <span>${t('settings.logout')}</span></${Button}></div>`
    }
  </dialog>`;
}
