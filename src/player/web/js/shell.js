/**
 * Makes the page open even while the player is out of reach: its service worker keeps the page's own
 * files (sw.js). It is told here what these are, since only a loaded page knows. Browsers allow
 * service workers on loopback and https addresses only.
 */
export async function keepShell({ serviceWorker, performance, location }) {
  if (!serviceWorker) return;
  try {
    await serviceWorker.register('sw.js', { updateViaCache: 'none' });
  } catch {
    return; // an address without this right; the page works without
  }
  const { active } = await serviceWorker.ready;
  active.postMessage({ shell: shellFiles(performance.getEntriesByType('resource'), location) });
}

/** The page's own files among what it has loaded: never an answer of the player. */
export function shellFiles(entries, { origin }) {
  const own = entries
    .map(({ name }) => new URL(name))
    .filter((url) => url.origin === origin && !url.pathname.startsWith('/api/'))
    .map((url) => url.pathname);
  return [...new Set(own)];
}
