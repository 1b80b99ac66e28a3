const names = ['snapshot', 'login', 'player', 'position', 'queue', 'rows', 'message'];
const firstRetryMs = 500;
const lastRetryMs = 4000;
const quietMs = 10000;
const openingMs = 8000; // a stream that has said nothing for so long after its opening never will

/** A timer of which there is at most one at a time. */
function createTimer(clock) {
  let timer = null;
  const stop = () => {
    if (timer !== null) clock.clearTimeout(timer);
    timer = null;
  };
  return {
    stop,
    start(work, ms) {
      stop();
      timer = clock.setTimeout(() => {
        timer = null;
        work();
      }, ms);
    },
    get runs() {
      return timer !== null;
    },
  };
}

/** Longer from attempt to attempt. */
function createDelays() {
  let ms = firstRetryMs;
  return {
    reset() {
      ms = firstRetryMs;
    },
    next() {
      const delay = ms;
      ms = Math.min(ms * 2, lastRetryMs);
      return delay;
    },
  };
}

/** The data of an event; undefined for one that cannot be read, which does not end the stream. */
function dataOf(event) {
  try {
    return JSON.parse(event.data);
  } catch {
    return undefined;
  }
}

/**
 * Keeps one event stream open for as long as the page lives. A lost stream is opened anew instead
 * of resumed: a new one begins with a snapshot, so whatever was missed is whole again. `onEvent`
 * gets an event's name and its data, `onLost` runs once at each loss.
 */
export function connectEvents({ open, onEvent, onLost, clock = globalThis }) {
  let source = null;
  let heardAt = 0;
  const delays = createDelays();
  const retry = createTimer(clock);
  const opening = createTimer(clock);

  function receive(name, event) {
    heardAt = clock.performance.now();
    opening.stop();
    const data = dataOf(event);
    if (data === undefined) return;
    if (name === 'snapshot') delays.reset();
    onEvent(name, data);
  }

  function lose(lost) {
    lost?.close();
    opening.stop();
    if (!lost || lost !== source || retry.runs) return;
    retry.start(connect, delays.next());
    onLost();
  }

  function close() {
    opening.stop();
    retry.stop();
    source?.close();
    source = null;
  }

  function connect() {
    close();
    const opened = open();
    source = opened;
    opening.start(() => lose(opened), openingMs);
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
      delays.reset();
      connect();
    },
    /** The same, if the stream has been quiet for longer than a living one usually is. */
    renewIfOld() {
      if (clock.performance.now() - heardAt > quietMs) this.renew();
    },
    /** A request did not reach the player, so the stream may be dead too without knowing. */
    doubt: () => lose(source),
    /** No further attempts until renew(). */
    close,
  };
}
