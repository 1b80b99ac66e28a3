/** A state, one reducer, and listeners that hear of each change once. */
export function createStore(reduce, initial) {
  let state = initial;
  const listeners = new Set();
  return {
    get state() {
      return state;
    },
    dispatch(event) {
      const next = reduce(state, event);
      if (next === state) return;
      state = next;
      for (const listener of [...listeners]) listener();
    },
    subscribe(listener) {
      listeners.add(listener);
      return () => listeners.delete(listener);
    },
  };
}
