/** `shortcuts`: single keys steer. `audible`: this page plays silence for the lock screen's sake. */
const defaults = { shortcuts: true, audible: false };

/** What the reader chose on this device. Without storage a choice lasts for the visit. */
export function createPreferences(storage) {
  const read = () => {
    try {
      return JSON.parse(storage.getItem('tavu.preferences')) ?? {};
    } catch {
      return {};
    }
  };
  let values = { ...defaults, ...read() };
  const write = (name, on) => {
    values = { ...values, [name]: Boolean(on) };
    try {
      storage.setItem('tavu.preferences', JSON.stringify(values));
    } catch {
      // kept for this visit only
    }
  };
  const preference = (name) => ({ get: () => values[name], set: (on) => write(name, on) });
  return Object.defineProperties(
    {},
    Object.fromEntries(Object.keys(defaults).map((name) => [name, preference(name)])),
  );
}
