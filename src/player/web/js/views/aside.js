import { html } from '../html.js';
import { useRef, useState } from '../../vendor/hooks.js';
import { useApp, useStore } from '../context.js';
import { unreadCount } from '../reducer.js';
import { t } from '../text.js';
import { Messages } from './messages.js';
import { NowPlaying } from './nowplaying.js';
import { Queue } from './queue.js';

const panels = { queue: Queue, messages: Messages };
const names = Object.keys(panels);
const steps = { ArrowLeft: -1, ArrowRight: 1 };

function PanelTab({ name, chosen, onChoose }) {
  const unread = useStore(unreadCount);
  const badge = name === 'messages' && !chosen && unread > 0;
  return html`<button type="button" role="tab" id=${`tab-${name}`} aria-controls="panel"
      aria-selected=${String(chosen)} tabindex=${chosen ? 0 : -1} onClick=${onChoose}>
    ${t(`place.${name}`)}
    ${
      badge &&
      html`<b class="badge" aria-hidden="true">${unread}</b>
      <span class="off-screen">, ${t('place.unread', { count: unread })}</span>`
    }
  </button>`;
}

/** What stands beside the list on a wide page: the player, and below or beside it one of two lists. */
export function Aside({ place }) {
  const [chosen, setChosen] = useState(place === 'messages' ? 'messages' : 'queue');
  const { actions } = useApp();
  const tabs = useRef();
  const choose = (name) => {
    if (name === 'messages' || chosen === 'messages') actions.markRead();
    setChosen(name);
  };
  const onKeyDown = (event) => {
    const step = steps[event.key];
    if (!step) return;
    const next = names[(names.indexOf(chosen) + step + names.length) % names.length];
    choose(next);
    tabs.current.querySelector(`#tab-${next}`).focus();
  };
  const Panel = panels[chosen];
  return html`<aside class="aside" aria-label=${t('player')}>
    <div class="aside-part"><${NowPlaying} level=${2} /></div>
    <div class="aside-part aside-lists">
      <div class="panel-tabs" role="tablist" aria-label=${t('lists')} ref=${tabs}
          onKeyDown=${onKeyDown}>
        ${names.map(
          (name) => html`<${PanelTab} key=${name} name=${name} chosen=${name === chosen}
            onChoose=${() => choose(name)} />`,
        )}
      </div>
      <div role="tabpanel" id="panel" aria-labelledby=${`tab-${chosen}`}>
        <${Panel} level=${2} /></div>
    </div>
  </aside>`;
}
