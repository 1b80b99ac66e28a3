/** What the reader chose on this device. Without storage a choice lasts for the visit. */
export function createPreferences(storage) {
  const read = () => {
    try {
      return JSON.parse(storage.getItem('tavu.preferences')) ?? {};
    } catch {
      return {};
    }
  };
  let values = { shortcuts: true, ...read() };
  return {
    get shortcuts() {
      return values.shortcuts;
    },
    set shortcuts(on) {
      values = { ...values, shortcuts: Boolean(on) };
      try {
        storage.setItem('tavu.preferences', JSON.stringify(values));
      } catch {
        // kept for this visit only
      }
    },
  };
}
