import { html } from '../html.js';
import { useState } from '../../vendor/hooks.js';
import { useApp } from '../context.js';
import { t } from '../text.js';

/** Asks for the access code that the player wants from devices other than its own. */
export function TokenForm() {
  const { access } = useApp();
  const [text, setText] = useState('');
  const submit = (event) => {
    event.preventDefault();
    access.use(text.trim());
  };
  return html`<section class="login" aria-labelledby="token-title">
    <h1 id="token-title">${t('token.title')}</h1>
    <p class="login-intro">${t(access.token ? 'token.wrong' : 'token.text')}</p>
    <form class="token" onSubmit=${submit}>
      <label for="token">${t('token.label')}</label>
      <input id="token" type="password" autocomplete="current-password" required value=${text}
        onInput=${(event) => setText(event.currentTarget.value)} />
      <button class="button primary"><span>${t('token.go')}</span></button>
    </form>
  </section>`;
}
