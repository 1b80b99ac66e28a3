const everyMs = 1000;
const quietMs = 1500;

/** So long may a player on the same network take for a word; with the rest, five seconds. */
export const patienceMs = 2500;

/**
 * Notices a player that has gone without a goodbye: power cut, cable out, out of the radio's reach.
 * A stream tells nothing of that, so a quiet one is helped by a short question, as long as somebody
 * looks (`wanted`). `ping` is that question, `onSilent` runs when it gets no answer.
 */
export function watchForSilence({ events, ping, wanted, onSilent, clock = globalThis }) {
  let answeredAt = 0;
  let asking = false;
  const quietSince = () => Math.max(answeredAt, events.heardAt);
  const ask = async () => {
    asking = true;
    try {
      await ping();
      answeredAt = clock.performance.now();
    } catch {
      onSilent();
    }
    asking = false;
  };
  return clock.setInterval(() => {
    const quiet = clock.performance.now() - quietSince() >= quietMs;
    if (!asking && quiet && wanted()) ask();
  }, everyMs);
}
