const names = ['snapshot', 'login', 'player', 'position', 'rows', 'message'];
const firstRetryMs = 500;
const lastRetryMs = 4000;
const quietMs = 10000;
const openingMs = 8000; // a stream that has said nothing for so long after its opening never will

/**
 * Keeps one event stream open for as long as the page lives. A lost stream is opened anew instead
 * of resumed: a new one begins with a snapshot, so whatever was missed is whole again. `onEvent`
 * gets an event's name and its data, `onLost` runs once at each loss.
 */
export function connectEvents({ open, onEvent, onLost, clock = globalThis }) {
  let source = null;
  let retry = null;
  let retryMs = firstRetryMs;
  let heardAt = 0;
  let opening = null;

  function hear() {
    heardAt = clock.performance.now();
    stopOpening();
  }

  function stopOpening() {
    if (opening !== null) clock.clearTimeout(opening);
    opening = null;
  }

  function receive(name, event) {
    hear();
    let data;
    try {
      data = JSON.parse(event.data);
    } catch {
      return; // one unreadable event does not end the stream
    }
    if (name === 'snapshot') retryMs = firstRetryMs;
    onEvent(name, data);
  }

  function lose(lost) {
    lost?.close();
    stopOpening();
    if (!lost || lost !== source || retry !== null) return;
    retry = clock.setTimeout(connect, retryMs);
    retryMs = Math.min(retryMs * 2, lastRetryMs);
    onLost();
  }

  function connect() {
    if (retry !== null) clock.clearTimeout(retry);
    retry = null;
    source?.close();
    const opened = open();
    source = opened;
    stopOpening();
    opening = clock.setTimeout(() => lose(opened), openingMs);
    for (const name of names) opened.addEventListener(name, (event) => receive(name, event));
    opened.addEventListener('error', () => lose(opened));
  }

  connect();
  return {
    /** When the stream last brought something, by the clock's monotonic time. */
    get heardAt() {
      return heardAt;
    },
    /** Opens a new stream at once, for a full state. */
    renew() {
      retryMs = firstRetryMs;
      connect();
    },
    /** The same, if the stream has been quiet for longer than a living one usually is. */
    renewIfOld() {
      if (clock.performance.now() - heardAt > quietMs) this.renew();
    },
    /** A request did not reach the player, so the stream may be dead too without knowing. */
    doubt: () => lose(source),
    /** No further attempts until renew(). */
    close() {
      stopOpening();
      if (retry !== null) clock.clearTimeout(retry);
      retry = null;
      source?.close();
      source = null;
    },
  };
}
