// Single-key shortcuts. They can be switched off, since they get in the way of speech input.

const typing = new Set(['INPUT', 'TEXTAREA', 'SELECT']);

/** True where a letter is text, or belongs to a control that uses keys itself. */
export function takesKeys(element) {
  if (!element) return false;
  return element.isContentEditable || (typing.has(element.tagName) && element.type !== 'range');
}

export function shortcutFor(event) {
  if (event.ctrlKey || event.metaKey || event.altKey || event.repeat) return null;
  return { '/': 'search', p: 'pause', n: 'next', b: 'previous' }[event.key] ?? null;
}

/** Listens for shortcuts until the returned function is called. */
export function listenForShortcuts(window, actions, preferences) {
  const onKey = (event) => {
    const what = shortcutFor(event);
    const busy = takesKeys(event.target) || window.document.querySelector('dialog[open]');
    if (!what || busy || !preferences.shortcuts) return;
    event.preventDefault();
    if (what === 'search') window.document.getElementById('search')?.focus();
    else actions[what]();
  };
  window.addEventListener('keydown', onKey);
  return () => window.removeEventListener('keydown', onKey);
}
