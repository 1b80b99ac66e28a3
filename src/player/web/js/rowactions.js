import { titleOf } from './rows.js';
import { t } from './text.js';

/** An answer that closes a screen so late may be no more than the end of the wait for one. */
const lateMs = 20000;

/** What can be done with a row. */
export function createRowActions({ api, dispatch, notices, now }) {
  const { attempt, showProblem, showResult, reportError, toast } = notices;
  return {
    async play(row) {
      dispatch({ type: 'starting', ref: row.ref });
      dispatch({ type: 'announce', text: t('row.starting', { title: titleOf(row) }) });
      try {
        await attempt(() => api.play(row.ref), showProblem);
      } finally {
        dispatch({ type: 'starting', ref: '' });
      }
    },

    /** Presses an action row; `where` says what closing and opening mean there. */
    activate: (row, where, onError = reportError) =>
      attempt(async () => {
        const pressedAt = now();
        const answer = await api.activate({ ref: row.ref });
        if (answer.result?.path) return where.open(answer.result.path);
        if (!answer.close) return undefined;
        where.close();
        if (now() - pressedAt < lateMs) return undefined;
        return toast({ title: t('row.late', { title: titleOf(row) }), text: t('row.lateText') });
      }, onError),

    /** Rates a row of a list; the service's answer shows like that of any other action. */
    rateRow: (row, up) =>
      attempt(async () => {
        const answer = await api.activate({
          path: row.mediaData.metaData.likeItPath,
          role: 'likeIt',
          value: up,
        });
        if (answer.result?.path) await showResult(answer.result.path);
      }),
    showRowMenu: (row) => dispatch({ type: 'rowMenu', row }),
  };
}
