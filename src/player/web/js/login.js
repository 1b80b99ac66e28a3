// When the page asks for a new code by itself. Pure.

/** So often in a row without anybody signing in; then a button asks. */
export const renewalLimit = 5;

const clockSlackMs = 2000;

export const codeHasExpired = (login, now) =>
  login?.state === 'waiting' && login.endsAt > 0 && now >= login.endsAt;

/**
 * Whether a code ran out before it was used while somebody may still be looking. `lastEndsAt` is
 * when the last code that was shown ran out: the player may have taken it back by itself.
 */
export function mayRenew({ login, lastEndsAt, now, visible, renewals }) {
  if (!visible || renewals >= renewalLimit) return false;
  if (codeHasExpired(login, now)) return true;
  const takenBack = login?.state === 'loggedOut' || login?.state === 'failed';
  return takenBack && lastEndsAt > 0 && now >= lastEndsAt - clockSlackMs;
}
