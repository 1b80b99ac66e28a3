import { html } from '../html.js';
import { useLayoutEffect, useRef, useState } from '../../vendor/hooks.js';
import { useApp, useListing, useStore } from '../context.js';
import { t } from '../text.js';
import { Icon, Mark } from './icons.js';

function Search({ route, title }) {
  const { actions } = useApp();
  const [text, setText] = useState(route.text);
  const [working, setWorking] = useState(false);
  // Before the next key is read, which must not be lost.
  useLayoutEffect(() => setText(route.text), [route.text, route.path]);
  const submit = async (event) => {
    event.preventDefault();
    setWorking(true);
    await actions.search(text);
    setWorking(false);
  };
  return html`<form class="search" role="search" onSubmit=${submit}>
    <${Icon} name="search" size=${20} />
    <input id="search" type="search" name="text" autocomplete="off" autocapitalize="off"
      spellcheck=${false} enterkeyhint="search" aria-label=${title || t('search.label')}
      placeholder=${title || t('search.label')} value=${text}
      onInput=${(event) => setText(event.currentTarget.value)} />
    ${working && html`<span class="spinner" aria-hidden="true"></span>`}
  </form>`;
}

/** The search field, where the service's root says that it can be searched. */
function RootSearch({ route }) {
  const root = useListing('');
  const { search } = root.parent;
  const known = useRef(null);
  known.current = search ?? known.current;
  return known.current && html`<${Search} route=${route} title=${known.current.title} />`;
}

/** Where its last button stands depends on who is signed in; until then it has no place. */
export function Header({ route, signedIn, onSettings }) {
  const { actions } = useApp();
  const known = useStore((state) => Boolean(state.login));
  const home = (event) => {
    event.preventDefault();
    actions.goHome();
  };
  return html`<header class="header">
    <a class="brand" href="#/browse" onClick=${home} aria-label=${`${t('app.name')}: ${t('home')}`}>
      <${Mark} />
    </a>
    <div class="header-middle">${signedIn && html`<${RootSearch} route=${route} />`}</div>
    ${
      known &&
      html`<button type="button" class="button ghost" aria-label=${t('settings')}
        title=${t('settings')} onClick=${onSettings}><${Icon} name="settings" /></button>`
    }
  </header>`;
}
