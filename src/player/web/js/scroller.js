/**
 * What scrolls around an element: the list's own frame, or the whole page where the window is too
 * low for frames (see shell.css).
 */
export function scrollerOf(element) {
  const frame = element?.closest('[data-scroller]');
  if (frame && getComputedStyle(frame).overflowY === 'auto') return frame;
  return document.scrollingElement;
}

/** The same as the root of an observer, where the page itself is written as null. */
export function observerRootOf(element) {
  const scroller = scrollerOf(element);
  return scroller === document.scrollingElement ? null : scroller;
}

/** The target that hears of scrolling: of the page, its document does. */
export function scrollTargetOf(scroller) {
  return scroller === document.scrollingElement ? document : scroller;
}
