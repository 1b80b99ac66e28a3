/** What the buttons of the player ask for. Each counts as busy until it has been answered. */
export function createCommands({ api, dispatch, notices: { attempt, showResult } }) {
  const command = async (name, body) => {
    dispatch({ type: 'busy', name, by: 1 });
    try {
      await attempt(async () => {
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
    setMode: (mode) => command('mode', { mode }),
    setVolume: (volume) => command('volume', { volume }),
    setMute: (mute) => command('volume', { mute }),
    /** 0 minutes call the sleep timer off. */
    setSleep: (minutes, finishTrack) => command('sleep', { minutes, finishTrack }),
    rate: (rating) => command(rating === 'up' ? 'like' : 'dislike'),
    selectOutput: (id) => attempt(() => api.selectOutput(id)),
  };
}
