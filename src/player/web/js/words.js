/** The title that the player gives to failures which have none; it says nothing by itself. */
const emptyTitle = 'Error';

/** What to show large and what below it, of a title and a text of the player. */
export function wordsOf(title, text) {
  if (text && (!title || title === emptyTitle)) return { title: text, text: '' };
  return { title: title ?? '', text: text ?? '' };
}
