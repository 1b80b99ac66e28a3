import { ApiError } from './api.js';
import { isMessageScreen, RowType } from './rows.js';
import { t } from './text.js';

let toastNumber = 0;

const screenOfRows = (rows, more = {}) => ({
  title: rows[0]?.title ?? '',
  text: rows[0]?.longDescription ?? '',
  rows,
  ...more,
});

const screenOfError = (error) => ({
  title: error.title,
  text: error.detail,
  at: error.at,
  status: error.status,
  request: error.instance,
  rows: [],
});

/**
 * How the page tells of what came of a press: a short note passes by, a message with buttons stays
 * until it is answered.
 */
export function createNotices({ api, store, dispatch }) {
  function toast({ kind = 'info', title, text = '', rows }) {
    toastNumber += 1;
    dispatch({ type: 'toast', toast: { id: `own-${toastNumber}`, kind, title, text, rows } });
  }

  const showScreen = (screen) =>
    dispatch({ type: 'screen', screen: screen && { at: new Date().toISOString(), ...screen } });
  const showRows = (rows, more) => showScreen(screenOfRows(rows, more));

  /** The rows of a message that the service wants shown, or none if it has gone. */
  async function messageRows(path) {
    const answer = await api.rows(path, 0, 49);
    return answer.rows ?? [];
  }

  /** Shows what went wrong: the screen that the service names, else the words of the answer. */
  async function showProblem(error) {
    const plain = screenOfError(error);
    if (!error.screenPath) return showScreen(plain);
    const rows = await messageRows(error.screenPath).catch(() => []);
    if (!isMessageScreen(rows)) return showScreen(plain);
    return showRows(rows, { status: plain.status, request: plain.request });
  }

  /** Shows where an action led. */
  async function showResult(path) {
    const rows = await messageRows(path);
    if (!rows.length) return toast({ title: t('screen.gone') });
    if (rows.length > 1 || rows[0].type !== RowType.message) return showRows(rows);
    return toast({ title: rows[0].title, text: rows[0].longDescription });
  }

  async function reportError(error) {
    if (error.screenPath) return showProblem(error);
    return toast({ kind: 'error', title: error.title, text: error.detail });
  }

  /** Runs `work`; offline or failed, it says so. Returns whether it succeeded. */
  async function attempt(work, onError = reportError) {
    if (store.state.connection !== 'live') {
      toast({ kind: 'error', title: t('lost.control') });
      return false;
    }
    try {
      await work();
      return true;
    } catch (error) {
      if (!(error instanceof ApiError)) throw error;
      await onError(error);
      return false;
    }
  }

  return { toast, showScreen, showRows, messageRows, showProblem, showResult, reportError, attempt };
}
