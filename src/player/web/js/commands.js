/**
 * Sends one value after another, each when the one before has been answered, so that none overtakes
 * another on its way; of those that wait only the newest is sent. Resolves to what came of the last.
 */
function inTurn(send) {
  let next = null;
  let running = null;
  const run = async () => {
    let came;
    try {
      while (next) {
        const { value } = next;
        next = null;
        came = await send(value);
      }
    } finally {
      running = null;
    }
    return came;
  };
  return (value) => {
    next = { value };
    running ??= run();
    return running;
  };
}

/**
 * Sets the play mode. `change` makes it of the one that was asked for last, as long as the player has
 * not told of that: of two quick presses the second goes on from the first.
 */
function createModeSetter(store, set) {
  const send = inTurn(set);
  const told = () => store.state.player?.mode ?? 0;
  let asked = null;
  store.subscribe(() => {
    if (asked?.answered && told() !== asked.before) asked = null;
  });
  return async (change) => {
    const mine = { mode: change(asked?.mode ?? told()) };
    asked = mine;
    let done = false;
    try {
      done = await send(mine.mode);
    } finally {
      const isComing = done && told() !== mine.mode;
      if (asked === mine) asked = isComing ? { ...mine, answered: true, before: told() } : null;
    }
  };
}

/** What the buttons of the player ask for. Each counts as busy until it has been answered. */
export function createCommands({ api, store, dispatch, notices: { attempt, showResult } }) {
  /** Whether it succeeded. */
  const command = async (name, body) => {
    dispatch({ type: 'busy', name, by: 1 });
    try {
      return await attempt(async () => {
        const answer = await api.command(name, body);
        if (answer?.result?.path) await showResult(answer.result.path);
      });
    } finally {
      dispatch({ type: 'busy', name, by: -1 });
    }
  };
  return {
    pause: () => command('pause'),
    next: () => command('next'),
    previous: () => command('previous'),
    stop: () => command('stop'),
    seek: (position) => command('seek', { position: Math.round(position) }),
    setMode: createModeSetter(store, (mode) => command('mode', { mode })),
    setVolume: inTurn((volume) => command('volume', { volume })),
    setMute: (mute) => command('volume', { mute }),
    /** 0 minutes call the sleep timer off. */
    setSleep: (minutes, finishTrack) => command('sleep', { minutes, finishTrack }),
    rate: (rating) => command(rating === 'up' ? 'like' : 'dislike'),
    selectOutput: (id) => attempt(() => api.selectOutput(id)),
  };
}
