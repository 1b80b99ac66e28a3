// Cover pictures for the mock player: flat shapes in a few inks, drawn from a number.

const inks = [
  ['#e4572e', '#f3a712', '#1d1a16', '#f7efe2'],
  ['#2e5eaa', '#5b95d6', '#f4d35e', '#0d1b2a'],
  ['#1b998b', '#2d3047', '#fffd82', '#e84855'],
  ['#6d326d', '#d56062', '#f3d3bd', '#2a0f2e'],
  ['#33658a', '#f26419', '#f6ae2d', '#2f4858'],
  ['#606c38', '#dda15e', '#fefae0', '#283618'],
  ['#b23a48', '#fcb9b2', '#461220', '#fed0bb'],
  ['#3d405b', '#81b29a', '#f2cc8f', '#e07a5f'],
];

const designs = [
  ([
    a,
    b,
    c,
    d,
  ]) => `<rect width="300" height="300" fill="${d}"/><circle cx="150" cy="170" r="96" fill="${a}"/>
    <path d="M0 190h300v110H0z" fill="${b}"/><path d="M0 232h300v68H0z" fill="${c}"/>`,
  ([
    a,
    b,
    c,
    d,
  ]) => `<rect width="300" height="300" fill="${a}"/><path d="M0 0h150v300H0z" fill="${b}"/>
    <circle cx="150" cy="150" r="72" fill="${c}"/><path d="M150 78a72 72 0 0 1 0 144z" fill="${d}"/>`,
  ([
    a,
    b,
    c,
    d,
  ]) => `<rect width="300" height="300" fill="${b}"/><path d="M0 300 170 60l130 240z" fill="${a}"/>
    <path d="M120 300 240 130l60 90v80z" fill="${d}"/><circle cx="66" cy="72" r="28" fill="${c}"/>`,
  ([a, b, c, d]) => `<rect width="300" height="300" fill="${c}"/>
    ${[0, 1, 2, 3, 4].map((i) => `<rect x="${24 + i * 54}" y="${40 + ((i * 67) % 120)}" width="36" height="${220 - ((i * 67) % 120)}" rx="18" fill="${[a, b, d][i % 3]}"/>`).join('')}`,
  ([a, b, c, d]) => `<rect width="300" height="300" fill="${d}"/>
    ${[130, 98, 66, 34].map((r, i) => `<circle cx="150" cy="150" r="${r}" fill="${[a, b, c, d][i]}"/>`).join('')}`,
  ([
    a,
    b,
    c,
    d,
  ]) => `<rect width="300" height="300" fill="${a}"/><path d="M0 0h300L0 300z" fill="${c}"/>
    <path d="M60 60h120v120H60z" fill="${b}"/><circle cx="205" cy="205" r="55" fill="${d}"/>`,
];

export function coverSvg(number) {
  const ink = inks[(number * 5) % inks.length];
  const design = designs[(number * 7 + Math.floor(number / inks.length)) % designs.length];
  return `<svg xmlns="http://www.w3.org/2000/svg" width="300" height="300" viewBox="0 0 300 300">${design(ink)}</svg>`;
}

/** Looks like a QR code and is none: the real player draws the real ones. */
export function codePictureSvg(text) {
  const size = 29;
  let state = [...text].reduce((sum, c) => (sum * 31 + c.charCodeAt(0)) >>> 0, 7);
  const random = () => {
    state = (state * 1664525 + 1013904223) >>> 0;
    return state / 2 ** 32;
  };
  const corner = (x, y) =>
    `<path d="M${x} ${y}h7v7h-7zM${x + 1} ${y + 1}v5h5v-5zM${x + 2} ${y + 2}h3v3h-3z" fill-rule="evenodd"/>`;
  const inCorner = (x, y) => (x < 8 && y < 8) || (x > size - 9 && y < 8) || (x < 8 && y > size - 9);
  let dots = '';
  for (let y = 0; y < size; y += 1) {
    for (let x = 0; x < size; x += 1) {
      if (!inCorner(x, y) && random() < 0.48) dots += `<path d="M${x} ${y}h1v1h-1z"/>`;
    }
  }
  return `<svg xmlns="http://www.w3.org/2000/svg" viewBox="-4 -4 ${size + 8} ${size + 8}" shape-rendering="crispEdges">
    ${corner(0, 0)}${corner(size - 7, 0)}${corner(0, size - 7)}${dots}</svg>`;
}
