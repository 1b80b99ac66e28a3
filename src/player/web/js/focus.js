import { takesKeys } from './shortcuts.js';

/**
 * Moves the focus to what has just come to stand on the page, unless the reader is writing somewhere:
 * what arrives while a hand is on the keys must not take them. Call it in a layout effect, so that
 * the focus is there before the next key is read.
 */
export function moveFocus(element, options) {
  if (element && !takesKeys(document.activeElement)) element.focus(options);
}
