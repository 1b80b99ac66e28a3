const key = 'tavu.token';

/**
 * The access code of a player on another device. It comes once with the address ("?token=…"), is
 * taken out of the address bar and the history at once, and is kept for this device.
 */
export function createAccess(window, onUse) {
  const url = new URL(window.location.href);
  const given = url.searchParams.get('token');
  const store = (token) => {
    try {
      window.localStorage.setItem(key, token);
    } catch {
      // lasts for the visit
    }
  };
  const load = () => {
    try {
      return window.localStorage.getItem(key) ?? '';
    } catch {
      return '';
    }
  };
  let token = given ?? load();
  if (given) {
    store(given);
    url.searchParams.delete('token');
    window.history.replaceState(window.history.state, '', url);
  }
  return {
    get token() {
      return token;
    },
    use(next) {
      token = next;
      store(next);
      onUse();
    },
  };
}
