// Keeps the page's own files, so that the page opens and can say that the player is out of reach.
// Answers of the player are never kept: whatever is below /api/ does not pass through here.

const shell = 'tavu-shell';
const start = new URL('./', self.registration.scope).pathname;
const patienceMs = 3000;
const giveUpMs = 10000; // what hangs takes one of the few connections that a browser opens

/** Under which name an answer is kept: the page is the same whatever its address carries. */
const keyOf = (request) => new URL(request.url).pathname;

const isShell = (request) => {
  const url = new URL(request.url);
  const ours = url.origin === self.location.origin && request.method === 'GET';
  if (request.mode === 'navigate') return ours && url.pathname === start;
  return ours && !url.pathname.startsWith('/api/');
};

async function fetchAndKeep(request) {
  // The page's own address may carry an access code, which is nothing to keep.
  const answer = await fetch(request.mode === 'navigate' ? start : request);
  if (answer.ok && answer.type === 'basic') {
    const cache = await caches.open(shell);
    await cache.put(keyOf(request), answer.clone());
  }
  return answer;
}

/** The player's own file while it answers, else the one that was kept. */
async function answerFor(request) {
  const fresh = fetchAndKeep(request);
  const late = new Promise((resolve) => {
    setTimeout(resolve, patienceMs);
  });
  const first = await Promise.race([fresh, late]).catch(() => null);
  if (first) return first;
  const kept = await caches.match(keyOf(request), { cacheName: shell });
  return kept ?? fresh;
}

/** Keeps what the page says it is made of, and nothing that it no longer is. */
async function keep(paths) {
  const cache = await caches.open(shell);
  const wanted = new Set([start, ...paths]);
  const known = new Set();
  for (const request of await cache.keys()) {
    const { pathname } = new URL(request.url);
    if (wanted.has(pathname)) known.add(pathname);
    else await cache.delete(request);
  }
  const missing = [...wanted].filter((path) => !known.has(path));
  const signal = AbortSignal.timeout(giveUpMs);
  await cache.addAll(missing.map((path) => new Request(path, { signal })));
}

self.addEventListener('install', (event) => {
  self.skipWaiting();
  event.waitUntil(caches.open(shell).then((cache) => cache.add(start)));
});

self.addEventListener('activate', (event) => event.waitUntil(self.clients.claim()));

self.addEventListener('fetch', (event) => {
  if (isShell(event.request)) event.respondWith(answerFor(event.request));
});

self.addEventListener('message', (event) => {
  if (Array.isArray(event.data?.shell)) event.waitUntil(keep(event.data.shell).catch(() => {}));
});
