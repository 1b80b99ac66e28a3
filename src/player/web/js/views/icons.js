import { html } from '../html.js';

// Drawn on a 24 × 24 grid; lines take the text's colour, `solid` shapes are filled with it.
const shapes = {
  play: {
    solid: 'M8 5.2v13.6a.9.9 0 0 0 1.37.77l11-6.8a.9.9 0 0 0 0-1.54l-11-6.8A.9.9 0 0 0 8 5.2z',
  },
  pause: { solid: 'M7 5h3.2v14H7zM13.8 5H17v14h-3.2z' },
  stop: { solid: 'M7 6h10a1 1 0 0 1 1 1v10a1 1 0 0 1-1 1H7a1 1 0 0 1-1-1V7a1 1 0 0 1 1-1z' },
  next: {
    solid: 'M5 6.1v11.8a.8.8 0 0 0 1.24.67L15 12.7V18h2.6V6H15v5.3L6.24 5.43A.8.8 0 0 0 5 6.1z',
  },
  previous: {
    solid: 'M19 6.1v11.8a.8.8 0 0 1-1.24.67L9 12.7V18H6.4V6H9v5.3l8.76-5.87A.8.8 0 0 1 19 6.1z',
  },
  shuffle: {
    line: 'M3 6.5h3.2c1.6 0 3 .8 3.9 2.1l3.8 6.8c.9 1.3 2.3 2.1 3.9 2.1H21M3 17.5h3.2c1.6 0 3-.8 3.9-2.1M13.9 8.6c.9-1.3 2.3-2.1 3.9-2.1H21M18.5 4 21 6.5 18.5 9M18.5 15l2.5 2.5-2.5 2.5',
  },
  repeat: {
    line: 'M4 11V9.5A3.5 3.5 0 0 1 7.5 6H20M17.5 3.5 20 6l-2.5 2.5M20 13v1.5A3.5 3.5 0 0 1 16.5 18H4M6.5 20.5 4 18l2.5-2.5',
  },
  repeatOne: {
    line: 'M4 11V9.5A3.5 3.5 0 0 1 7.5 6H20M17.5 3.5 20 6l-2.5 2.5M20 13v1.5A3.5 3.5 0 0 1 16.5 18H4M6.5 20.5 4 18l2.5-2.5M11 10.7l1.5-.9v4.6',
  },
  up: {
    line: 'M7.5 10.5 11 3.8a2 2 0 0 1 2.9 2.3L13 9.5h5.6a2 2 0 0 1 1.95 2.45l-1.5 6.5A2 2 0 0 1 17.1 20H7.5zM7.5 20H4.8a.8.8 0 0 1-.8-.8v-7.9a.8.8 0 0 1 .8-.8h2.7',
  },
  down: {
    line: 'M16.5 13.5 13 20.2a2 2 0 0 1-2.9-2.3l.9-3.4H5.4a2 2 0 0 1-1.95-2.45l1.5-6.5A2 2 0 0 1 6.9 4h9.6zM16.5 4h2.7a.8.8 0 0 1 .8.8v7.9a.8.8 0 0 1-.8.8h-2.7',
  },
  volume: {
    line: 'M4 9.5v5h3.2L12 18.7V5.3L7.2 9.5zM15.5 9a4.2 4.2 0 0 1 0 6M18 6.5a7.8 7.8 0 0 1 0 11',
  },
  muted: { line: 'M4 9.5v5h3.2L12 18.7V5.3L7.2 9.5zM16 9.7l4.6 4.6M20.6 9.7 16 14.3' },
  search: { line: 'M10.8 4.3a6.5 6.5 0 1 1 0 13 6.5 6.5 0 0 1 0-13zM15.6 15.6 20 20' },
  settings: { line: 'M4 7.5h8.5M17.5 7.5H20M4 16.5h2.5M11.5 16.5H20M15 5v5M9 14v5' },
  back: { line: 'M14.5 5.5 8 12l6.5 6.5' },
  open: { line: 'M9.5 5.5 16 12l-6.5 6.5' },
  close: { line: 'M6 6l12 12M18 6 6 18' },
  copy: {
    line: 'M9 8.5h9.5a1 1 0 0 1 1 1V19a1 1 0 0 1-1 1H9a1 1 0 0 1-1-1V9.5a1 1 0 0 1 1-1zM5 15.5a1 1 0 0 1-1-1V5a1 1 0 0 1 1-1h9.5a1 1 0 0 1 1 1',
  },
  more: {
    solid:
      'M5.5 10.2a1.8 1.8 0 1 1 0 3.6 1.8 1.8 0 0 1 0-3.6zM12 10.2a1.8 1.8 0 1 1 0 3.6 1.8 1.8 0 0 1 0-3.6zM18.5 10.2a1.8 1.8 0 1 1 0 3.6 1.8 1.8 0 0 1 0-3.6z',
  },
  check: { line: 'M5 12.8 9.5 17.3 19 7.2' },
  external: {
    line: 'M10.5 5H6a1 1 0 0 0-1 1v12a1 1 0 0 0 1 1h12a1 1 0 0 0 1-1v-4.5M14 4.5h5.5V10M19 5l-8.5 8.5',
  },
  note: {
    line: 'M9 17.5V6.3l9.5-2v11M6.5 20a2.5 2.5 0 1 0 0-5 2.5 2.5 0 0 0 0 5zM16 17.8a2.5 2.5 0 1 0 0-5 2.5 2.5 0 0 0 0 5z',
  },
  disc: {
    line: 'M12 3.5a8.5 8.5 0 1 1 0 17 8.5 8.5 0 0 1 0-17zM12 9.5a2.5 2.5 0 1 1 0 5 2.5 2.5 0 0 1 0-5zM6.7 12A5.3 5.3 0 0 1 12 6.7',
  },
  station: {
    line: 'M12 10.5a1.5 1.5 0 1 1 0 3 1.5 1.5 0 0 1 0-3zM8.3 15.7a5.2 5.2 0 0 1 0-7.4M15.7 8.3a5.2 5.2 0 0 1 0 7.4M5.3 18.7a9.5 9.5 0 0 1 0-13.4M18.7 5.3a9.5 9.5 0 0 1 0 13.4',
  },
  folder: {
    line: 'M4 7a1.5 1.5 0 0 1 1.5-1.5h4l2 2.5h7A1.5 1.5 0 0 1 20 9.5V17a1.5 1.5 0 0 1-1.5 1.5h-13A1.5 1.5 0 0 1 4 17z',
  },
  queue: { line: 'M4 6.5h16M4 12h9.5M4 17.5h9.5M17 11.5v7M17 11.5l3.5 1.7M15.2 19.8a1.8 1.8 0 1 0 0-3.6 1.8 1.8 0 0 0 0 3.6z' },
  sleep: { line: 'M19.5 14.2A8 8 0 0 1 9.8 4.5a8 8 0 1 0 9.7 9.7z' },
  wave: { line: 'M4 10.5v3M8 7.5v9M12 4.5v15M16 8.5v7M20 10.5v3' },
  decoder: {
    line: 'M8 7.5h8a.8.8 0 0 1 .8.8v7.4a.8.8 0 0 1-.8.8H8a.8.8 0 0 1-.8-.8V8.3a.8.8 0 0 1 .8-.8zM10 4v3.5M14 4v3.5M10 16.5V20M14 16.5V20M3.7 10h3.5M3.7 14h3.5M16.8 10h3.5M16.8 14h3.5',
  },
  output: {
    line: 'M8 3.5h8A1.5 1.5 0 0 1 17.5 5v14a1.5 1.5 0 0 1-1.5 1.5H8A1.5 1.5 0 0 1 6.5 19V5A1.5 1.5 0 0 1 8 3.5zM12 11.5a3 3 0 1 1 0 6 3 3 0 0 1 0-6zM12 7.2v.1',
  },
  messages: {
    line: 'M5.5 5h13A1.5 1.5 0 0 1 20 6.5v9a1.5 1.5 0 0 1-1.5 1.5H11l-4.5 3.5V17h-1A1.5 1.5 0 0 1 4 15.5v-9A1.5 1.5 0 0 1 5.5 5z',
  },
  error: { line: 'M12 3.5a8.5 8.5 0 1 1 0 17 8.5 8.5 0 0 1 0-17zM12 7.8v5M12 16.1v.1' },
  info: { line: 'M12 3.5a8.5 8.5 0 1 1 0 17 8.5 8.5 0 0 1 0-17zM12 11.2v5M12 7.9V7.8' },
  skipped: { line: 'M4.5 7l7 5-7 5zM13 7l7 5-7 5z' },
  browse: { line: 'M4 5h6.5v6.5H4zM13.5 5H20v6.5h-6.5zM4 14.5h6.5V20H4zM13.5 14.5H20V20h-6.5z' },
};

/**
 * One of the page's signs. Always decoration: what it stands for is said in words beside it. `size`
 * is in CSS pixels at the usual text size, and grows with the text.
 */
export function Icon({ name, size = 24 }) {
  const { line, solid } = shapes[name];
  const rem = `${size / 16}rem`;
  return html`<svg class="icon" viewBox="0 0 24 24" width=${rem} height=${rem}
      aria-hidden="true" focusable="false">
    ${
      solid
        ? html`<path d=${solid} fill="currentColor" />`
        : html`<path d=${line} fill="none" stroke="currentColor" stroke-width="1.75"
          stroke-linecap="round" stroke-linejoin="round" />`
    }
  </svg>`;
}

/** The page's mark: four bars of sound. */
export function Mark() {
  return html`<svg class="mark" viewBox="0 0 32 32" width="2rem" height="2rem" aria-hidden="true">
    <rect x="5" y="13" width="4" height="6" rx="2" />
    <rect x="11" y="7" width="4" height="18" rx="2" />
    <rect x="17" y="10.5" width="4" height="11" rx="2" />
    <rect x="23" y="4" width="4" height="24" rx="2" />
  </svg>`;
}
