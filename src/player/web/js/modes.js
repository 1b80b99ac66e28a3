// Play modes are numbered 0 to 5; the page shows them as a shuffle switch and a repeat choice.

const table = [
  { shuffle: false, repeat: 'off' },
  { shuffle: true, repeat: 'off' },
  { shuffle: false, repeat: 'one' },
  { shuffle: true, repeat: 'one' },
  { shuffle: false, repeat: 'all' },
  { shuffle: true, repeat: 'all' },
];
const flags = [null, 'shuffle', 'repeatOne', 'shuffleRepeatOne', 'repeatAll', 'shuffleRepeatAll'];

/** An unknown number reads as normal play. */
export const modeParts = (mode) => table[mode] ?? table[0];

const modeNumber = (shuffle, repeat) =>
  table.findIndex((entry) => entry.shuffle === shuffle && entry.repeat === repeat);

/** Normal play is always possible; the other modes as the player says. */
export function isSupported(mode, supported) {
  return mode === 0 || Boolean(flags[mode] && supported?.[flags[mode]]);
}

export const shuffleSupported = (supported) => [1, 3, 5].some((m) => isSupported(m, supported));
export const repeatSupported = (supported) => [2, 4].some((m) => isSupported(m, supported));

/** The mode after a press on shuffle. Keeps the repeat choice if the combination exists. */
export function toggledShuffle(mode, supported) {
  const { shuffle, repeat } = modeParts(mode);
  const wanted = modeNumber(!shuffle, repeat);
  if (isSupported(wanted, supported)) return wanted;
  const alone = modeNumber(!shuffle, 'off');
  return isSupported(alone, supported) ? alone : mode;
}

/** The mode after a press on repeat: off, all, one, and round again, without what is missing. */
export function nextRepeat(mode, supported) {
  const order = ['off', 'all', 'one'];
  const { shuffle, repeat } = modeParts(mode);
  const at = order.indexOf(repeat);
  for (let step = 1; step <= order.length; step += 1) {
    const wanted = modeNumber(shuffle, order[(at + step) % order.length]);
    if (isSupported(wanted, supported)) return wanted;
  }
  return 0;
}
