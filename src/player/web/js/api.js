import { t } from './text.js';
import { wordsOf } from './words.js';

/** The player answers some requests only after the service has; those may take this long. */
const patientMs = 40000;
const briskMs = 8000;

/** A failure to show to people: `title` and `detail` are the player's or the service's words. */
export class ApiError extends Error {
  constructor({ title, detail = '', status = 0, instance = '', actionReply = null }) {
    const words = wordsOf(title, detail);
    super(words.title);
    Object.assign(this, { title: words.title, detail: words.text, status, instance, actionReply });
    this.at = new Date().toISOString();
  }

  /** Path of the screen that the service wants shown, or "". */
  get screenPath() {
    return this.actionReply?.result?.path ?? '';
  }
}

async function problemOf(response) {
  let problem = {};
  try {
    problem = await response.json();
  } catch {
    // Not ours to answer in another form; the status still says something.
  }
  return new ApiError({
    ...problem,
    title: problem.title || `${response.status} ${response.statusText}`.trim(),
    status: response.status,
  });
}

/**
 * One request and its answer. `onUnreachable` runs when it did not get to the player at all.
 */
function createTransfer({ base, token, fetch, onUnreachable }) {
  return async (method, path, body, timeoutMs) => {
    const headers = { Accept: 'application/json' };
    if (body !== undefined) headers['Content-Type'] = 'application/json';
    if (token()) headers.Authorization = `Bearer ${token()}`;
    const abort = new AbortController();
    const timer = setTimeout(() => abort.abort(), timeoutMs);
    try {
      return await fetch(base + path, {
        method,
        headers,
        body: body === undefined ? undefined : JSON.stringify(body),
        signal: abort.signal,
      });
    } catch {
      if (abort.signal.aborted) {
        throw new ApiError({ title: t('error.timeout'), detail: t('error.timeoutText') });
      }
      onUnreachable?.();
      throw new ApiError({ title: t('error.network'), detail: t('error.networkText') });
    } finally {
      clearTimeout(timer);
    }
  };
}

/** Addresses that the browser fetches by itself and so cannot carry a header. */
function createAddresses({ base, token }) {
  const address = (url) => {
    if (!url || !token()) return url;
    return `${url}${url.includes('?') ? '&' : '?'}token=${encodeURIComponent(token())}`;
  };
  return {
    address,
    eventsAddress: () => address(`${base}/events`),
    /** `version` tells codes apart, so that no old picture is shown for a new code. */
    qrAddress: (version) => address(`${base}/login/qr.svg?v=${encodeURIComponent(version ?? '')}`),
  };
}

/**
 * The control API. `onUnreachable` runs when a request did not get to the player at all,
 * `onRefused` when it wants an access code: another one than that which holds now.
 */
export function createApi({ base = '/api/v1', token = () => '', fetch, onUnreachable, onRefused }) {
  const transfer = createTransfer({ base, token, fetch, onUnreachable });

  async function request(method, path, body, timeoutMs = briskMs) {
    const given = token();
    const response = await transfer(method, path, body, timeoutMs);
    if (response.status === 401 && given === token()) onRefused?.();
    if (!response.ok) throw await problemOf(response);
    if (response.status === 204) return {};
    return response.json();
  }

  const get = (path, timeoutMs) => request('GET', path, undefined, timeoutMs);
  const post = (path, body = {}, timeoutMs) => request('POST', path, body, timeoutMs);

  return {
    ...createAddresses({ base, token }),
    state: () => get('/state'),
    /** Whether the player is there; any answer will do. */
    ping: async (timeoutMs) => {
      const answer = await transfer('GET', '/login', undefined, timeoutMs);
      await answer.arrayBuffer();
    },
    rows: (path, from, to) => {
      const query = new URLSearchParams({ from: String(from), to: String(to) });
      if (path) query.set('path', path);
      return get(`/rows?${query}`, patientMs);
    },
    activate: (what) => post('/rows/activate', what, patientMs),
    search: (text) => post('/search', { text }, patientMs),
    play: (ref) => post('/play', { ref }, patientMs),
    command: (name, body) => post(`/player/${name}`, body, patientMs),
    queue: () => get('/queue'),
    outputs: () => get('/outputs'),
    selectOutput: (id) => post('/outputs', { id }),
    startLogin: () => post('/login/start', {}, patientMs),
    logout: () => post('/logout', {}, patientMs),
  };
}
