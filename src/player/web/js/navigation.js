import { isMessageScreen } from './rows.js';

/** The part of a row that a page's heading needs; the history's state is no place for all of it. */
function slim(row) {
  const { title, icon, type, ref, playable, mediaData, containerPlayable, audioType } = row;
  return { title, icon, type, ref, playable, mediaData, containerPlayable, audioType };
}

/** Ways through the page. */
export function createNavigation({ router, listings, notices }) {
  const route = () => router.current;

  function openPath(path, row) {
    const { trail, path: from, text, row: via } = route();
    const here = { path: from, text, row: via };
    router.push({ place: 'browse', path, row, trail: [...trail, here] });
  }

  /** What the buttons of a message do when it stands in the browse pane. */
  const inBrowse = {
    close() {
      listings.forget(route().trail.at(-1)?.path ?? '');
      router.back();
    },
    open: (path) => openPath(path, null),
  };

  /** … and when it stands in a dialog. */
  const inDialog = {
    close: () => notices.showScreen(null),
    async open(path) {
      const rows = await notices.messageRows(path);
      if (isMessageScreen(rows)) return notices.showRows(rows);
      notices.showScreen(null);
      return openPath(path, null);
    },
  };

  return {
    inBrowse,
    inDialog,
    open: (row) => openPath(row.path, slim(row)),
    goTo: (place) => router.push({ ...route(), place }),
    goHome: () => router.push({ place: 'browse', trail: [] }),
    goToTrail(index) {
      const entry = route().trail[index];
      router.push({ place: 'browse', ...entry, trail: route().trail.slice(0, index) });
    },
    back: () => router.back(),
  };
}
