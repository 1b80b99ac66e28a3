import { html } from '../html.js';
import { useEffect, useRef } from '../../vendor/hooks.js';
import { useApp, useNow, useStore } from '../context.js';
import { codeGroups, remaining } from '../format.js';
import { codeHasExpired, mayRenew } from '../login.js';
import { t } from '../text.js';
import { Button, CopyButton } from './controls.js';
import { Icon, Mark } from './icons.js';

const httpUrl = /^https?:\/\//i;

/** Asks for a new code when the shown one runs out, a few times, while somebody may be looking. */
function useRenewal(login, now) {
  const { actions } = useApp();
  const kept = useRef({ renewals: 0, asked: null, lastEndsAt: 0 }).current;
  useEffect(() => {
    if (login.state === 'waiting') kept.lastEndsAt = login.endsAt;
    const visible = document.visibilityState === 'visible';
    if (kept.asked === login || !mayRenew({ ...kept, login, now, visible })) return;
    Object.assign(kept, { asked: login, renewals: kept.renewals + 1, lastEndsAt: 0 });
    actions.startLogin();
  }, [login, now]);
}

function Code({ login }) {
  const groups = codeGroups(login.userCode);
  const spelled = [...groups.join('')].join(' ');
  return html`<div class="code-line">
    <p class="code" role="img" aria-label=${t('login.code', { code: spelled })}>
      ${groups.map((group, i) => html`<span key=${i}>${group}</span>`)}
    </p>
    <${CopyButton} text=${login.userCode} label=${t('messages.copy')} name=${t('login.copy')}
      done=${t('login.copied')} kind="second" />
  </div>`;
}

function Address({ uri }) {
  if (!httpUrl.test(uri ?? '')) return html`<p class="address">${uri}</p>`;
  return html`<p class="address">
    <a href=${uri} target="_blank" rel="noopener noreferrer">${uri}</a></p>`;
}

function Waiting({ login, now }) {
  const { api } = useApp();
  const expired = codeHasExpired(login, now);
  const complete = httpUrl.test(login.verificationUriComplete ?? '')
    ? login.verificationUriComplete
    : login.verificationUri;
  return html`<div class="login-ways">
    <ol class="login-steps">
      <li><p>${t('login.step.visit')}</p><${Address} uri=${login.verificationUri} /></li>
      <li><p>${t('login.step.code')}</p><${Code} login=${login} /></li>
    </ol>
    ${
      httpUrl.test(complete ?? '') &&
      html`<a class="button primary login-open" href=${complete}
        target="_blank" rel="noopener noreferrer">
      <span>${t('login.open')}</span><${Icon} name="external" size=${20} /></a>`
    }
    <p class="login-state"><span class="spinner" aria-hidden="true"></span>
      <span>${expired ? t('login.renewing') : t('login.waiting')}</span></p>
    <p class="login-left">${
      expired ? t('login.expired') : t('login.left', { time: remaining(login.endsAt - now) })
    }</p>
    <div class="login-scan">
      <p>${t('login.step.scan')}</p>
      <img class="qr" key=${login.userCode} width="208" height="208"
        src=${api.qrAddress(login.expiresAt)} alt=${t('login.qr', { uri: login.verificationUri })} />
    </div>
  </div>`;
}

const startTexts = { starting: 'login.starting', failed: 'login.again' };

function Start({ login }) {
  const { actions } = useApp();
  const failed = login.state === 'failed';
  const ended = login.state === 'loggedOut' && login.message;
  return html`
    ${
      (failed || ended) &&
      html`<div class="login-problem" role="alert">
      <${Icon} name="error" /><div><strong>${t(failed ? 'login.failed' : 'login.ended')}</strong>
      ${login.message && html`<p>${login.message}</p>`}</div></div>`
    }
    <${Button} kind="primary" onClick=${actions.startLogin}
        unavailable=${login.state === 'starting'}>
      <span>${t(startTexts[login.state] ?? 'login.start')}</span>
    </${Button}>`;
}

/** What everybody sees while no account is linked. */
export function Login() {
  const { store } = useApp();
  const login = useStore((state) => state.login) ?? { state: 'loggedOut' };
  const service = useStore((state) => state.service.name);
  const waiting = login.state === 'waiting';
  const now = useNow(waiting, 1000);
  useRenewal(login, now);
  useEffect(() => {
    if (waiting) store.dispatch({ type: 'announce', text: t('login.waiting') });
  }, [waiting, login.userCode]);
  return html`<section class="login ${waiting ? '' : 'first'}" aria-labelledby="login-title">
    ${!waiting && html`<${Mark} />`}
    <h1 id="login-title">${service ? t('login.title', { service }) : t('login.titlePlain')}</h1>
    <p class="login-intro">${t('login.intro')}</p>
    ${waiting ? html`<${Waiting} login=${login} now=${now} />` : html`<${Start} login=${login} />`}
  </section>`;
}
