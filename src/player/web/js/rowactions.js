import { titleOf } from './rows.js';
import { t } from './text.js';

/** What can be done with a row. */
export function createRowActions({ api, dispatch, notices }) {
  const { attempt, showProblem, showResult, reportError } = notices;
  return {
    async play(row) {
      dispatch({ type: 'starting', ref: row.ref });
      dispatch({ type: 'announce', text: t('row.starting', { title: titleOf(row) }) });
      await attempt(() => api.play(row.ref), showProblem);
      dispatch({ type: 'starting', ref: '' });
    },

    /** Presses an action row; `where` says what closing and opening mean there. */
    activate: (row, where, onError = reportError) =>
      attempt(async () => {
        const answer = await api.activate({ ref: row.ref });
        if (answer.result?.path) await where.open(answer.result.path);
        else if (answer.close) where.close();
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
