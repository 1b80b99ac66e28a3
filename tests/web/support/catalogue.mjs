// The mock player's music: rows as the control API gives them, for every kind of page that the
// web page must show.

const browse = '/amazonMusic/browse';
const pathOf = (page) =>
  page ? `${browse}?url=${encodeURIComponent(`https://service.test/${page}`)}` : browse;

export const rootPath = pathOf('');

const albums = [
  ['Harbour Lights', 'Mira Lindqvist'],
  ['Slow Engines', 'The Paper Cranes'],
  ['Nachtfahrt', 'Ostkreuz Ensemble'],
  ['Copper and Salt', 'Ines Varela'],
  ['Fieldnotes, Vol. 2', 'Tallgrass'],
  ['Blue Hour', 'Kofi Mensah Trio'],
  ['A Map of Small Rooms', 'Juniper & Oak'],
  ['Lanterns', 'Aiko Tanabe'],
  ['Undertow', 'Saltwater Choir'],
  ['Paper Moons', 'Leo Marchetti'],
  ['North by Ferry', 'Mira Lindqvist'],
  ['The Orchard Tapes', 'Tallgrass'],
  ['Marble Arch', 'Delphine Roux'],
  ['Static Bloom', 'Vantage'],
  ['Evening Standard', 'Kofi Mensah Trio'],
  [
    'Cartography for Beginners and Other Long Titles',
    'The Slow Cartographers of the Northern Reach',
  ],
  ['Glasshouse', 'Delphine Roux'],
  ['Half-Light', 'Aiko Tanabe'],
  ['Seven Bridges', 'Ostkreuz Ensemble'],
  ['Wintering', 'Juniper & Oak'],
].map(([title, artist], number) => ({ title, artist, number }));

const trackNames = [
  'Ferry Road',
  'First Light',
  'Tin Roof',
  'Letters Home',
  'The Long Pier',
  'Undercurrent',
  'Signal Box',
  'Quiet Machines',
  'Gulls',
  'Last Bus to Harbour Lights',
];

const art = (number) => `/api/v1/artwork/${number}`;
const two = (n) => String(n).padStart(2, '0');
const suffix = (ms) => {
  const s = Math.floor(ms / 1000);
  return ` (${two(Math.floor(s / 3600))}:${two(Math.floor(s / 60) % 60)}:${two(s % 60)})`;
};

const music = (artist, album, more = {}) => ({
  metaData: {
    artist,
    ...(album ? { album } : {}),
    playLogicPath: '/amazonMusic/playLogic',
    ...more,
  },
  resources: [{ uri: 'https://service.test/playable' }],
});

const folder = (title, page, icon = '') => ({
  title,
  icon,
  type: 1,
  audioType: 0,
  path: pathOf(page),
  openable: true,
  playable: false,
  doNotTrack: true,
  mediaData: { metaData: { playLogicPath: '/amazonMusic/playLogic' } },
});

const album = ({ title, artist, number }) => ({
  title,
  icon: art(number),
  type: 1,
  audioType: 1,
  containerType: 2,
  containerPlayable: true,
  path: pathOf(`album/${number}`),
  openable: true,
  playable: true,
  doNotTrack: true,
  mediaData: music(artist),
  sound: { kind: 'album', number },
});

const station = (title, number) => ({
  title,
  icon: art(number),
  type: 3,
  audioType: 2,
  path: '/amazonMusic?selfUrl=s',
  openable: false,
  playable: true,
  doNotTrack: true,
  mediaData: music('', ''),
  sound: { kind: 'station', number, title },
});

const track = (title, owner, index) => {
  const duration = 95000 + ((index * 37 + owner.number * 53) % 210) * 1000;
  return {
    title: title + suffix(duration),
    icon: art(owner.number),
    type: 3,
    audioType: 1,
    path: '/amazonMusic?selfUrl=t',
    openable: false,
    playable: true,
    likeable: true,
    doNotTrack: true,
    mediaData: music(owner.artist, owner.title, { likeItPath: '/amazonMusic/rate?url=x' }),
    sound: {
      kind: 'track',
      title,
      artist: owner.artist,
      album: owner.title,
      duration,
      number: owner.number,
    },
  };
};

const seeMore = (page) => ({
  title: 'See more results',
  type: 1,
  path: pathOf(page),
  openable: true,
  playable: false,
});

const refused = {
  title: 'The Vault Session',
  icon: 'skin:iconMusic',
  type: 1,
  path: pathOf('error/region'),
  openable: true,
  playable: false,
  doNotTrack: true,
};

/** A track that the service refuses to start, with a screen of its own. */
const unplayable = {
  ...track('Members Only', albums[3], 4),
  sound: { kind: 'refused', screen: '/amazonMusic/dialog/1' },
};

const tracksOf = (owner) => trackNames.map((name, i) => track(name, owner, i));

const manyTracks = (from, count) =>
  Array.from({ length: count }, (_, i) =>
    track(`Track number ${from + i + 1}`, albums[(from + i) % albums.length], from + i),
  );

const message = (title, longDescription) => ({
  title,
  longDescription,
  type: 6,
  openable: false,
  playable: false,
});
const action = (title, does) => ({
  title,
  type: 102,
  path: '/amazonMusic/close',
  does,
  openable: false,
  playable: false,
});
const link = (title, uri) => ({
  title,
  type: 106,
  link: uri,
  mediaData: { resources: [{ uri }] },
  openable: false,
  playable: false,
});

export const regionScreen = [
  message(
    'This track is not available where you are',
    'The rights for “The Vault Session” do not cover your country yet. You can ask to be told when they do, or read why some music is missing.',
  ),
  action('Tell me when it is', 'post'),
  link('Why is music missing?', 'https://service.test/help/rights'),
  action('Close', 'close'),
];

export const planScreen = [
  message(
    'Your plan does not include this track',
    'Members hear everything on demand. You can see the plans, or go on listening to stations and playlists.',
  ),
  link('See the plans', 'https://service.test/plans'),
  action('Not now', 'close'),
];

const page = (title, rows, parent = {}) => ({
  parent: { containerType: 100, ...parent },
  title,
  rows,
});

const pages = new Map([
  [
    '',
    page(
      '',
      [
        folder('Albums', 'albums'),
        folder('Artists', 'artists'),
        folder('Playlists', 'playlists'),
        folder('Stations', 'stations'),
        folder('All tracks', 'tracks'),
        folder('New and noteworthy', 'new'),
        folder('Empty shelf', 'empty'),
        folder('Broken shelf', 'broken'),
        folder('The whole archive', 'archive'),
      ],
      { search: { title: 'Search', containerType: 101, path: '/amazonMusic/search' } },
    ),
  ],
  ['albums', page('Albums', albums.map(album))],
  [
    'artists',
    page(
      'Artists',
      [...new Set(albums.map((a) => a.artist))].map((name) =>
        folder(name, `artist/${encodeURIComponent(name)}`),
      ),
    ),
  ],
  [
    'playlists',
    page('Playlists', [
      album({ title: 'Sunday, slowly', artist: '24 tracks', number: 21 }),
      album({ title: 'Night drive', artist: '18 tracks', number: 22 }),
      album({ title: 'Kitchen radio', artist: '40 tracks', number: 23 }),
    ]),
  ],
  [
    'stations',
    page(
      'Stations',
      [
        'Late-night piano',
        'Coastal folk',
        'Club 1989',
        'Strings only',
        'New today',
        'Deep focus',
      ].map((title, i) => station(title, 30 + i)),
    ),
  ],
  [
    'new',
    page('New and noteworthy', [
      ...tracksOf(albums[0]).slice(0, 4),
      refused,
      unplayable,
      ...tracksOf(albums[5]).slice(4, 8),
    ]),
  ],
  ['empty', page('Empty shelf', [])],
  ['error/region', page('', regionScreen)],
  ['archive', page('The whole archive', manyTracks(0, 220))],
  ['tracks', page('All tracks', [...manyTracks(0, 30), seeMore('tracks/2')])],
  ['tracks/2', page('All tracks', [...manyTracks(30, 30), seeMore('tracks/3')])],
  ['tracks/3', page('All tracks', manyTracks(60, 12))],
]);

function artistPage(name) {
  return page(name, albums.filter((a) => a.artist === name).map(album));
}

/** Services may say in a row that there is nothing; this one does it for a word. */
const saysNothing = 'silence';

function resultsFor(text) {
  if (text === saysNothing) return page('', [{ title: `Nothing was found for "${text}".` }]);
  const wanted = text.toLowerCase();
  const found = albums
    .filter((a) => `${a.title} ${a.artist}`.toLowerCase().includes(wanted))
    .map(album);
  const tracks = albums.flatMap(tracksOf).filter((row) => row.title.toLowerCase().includes(wanted));
  return page('', [...found, ...tracks.slice(0, 12)]);
}

const dialogs = new Map([
  ['/amazonMusic/dialog/1', page('', planScreen)],
  ['/amazonMusic/dialog/2', page('', [message('Thanks, you will hear from us', '')])],
  ['/amazonMusic/dialog/rated', page('', [message('Thanks. We will play more like this.', '')])],
  [
    '/amazonMusic/dialog/rated-down',
    page('', [message('Noted. We will play less like this.', '')]),
  ],
]);

/** The page behind a path of the control API, or null; "broken" is a page that cannot be had. */
export function pageOf(path) {
  if (dialogs.has(path)) return dialogs.get(path);
  const url = path && new URLSearchParams(path.split('?')[1] ?? '').get('url');
  const name = (url || 'https://service.test/').slice('https://service.test/'.length);
  if (pages.has(name)) return pages.get(name);
  if (name.startsWith('album/')) return albumPage(Number(name.slice(6)));
  if (name.startsWith('artist/')) return artistPage(decodeURIComponent(name.slice(7)));
  if (name.startsWith('search/')) return resultsFor(decodeURIComponent(name.slice(7)));
  return null;
}

function albumPage(number) {
  const owner = albums[number] ?? { title: 'Mixed', artist: 'Various', number };
  return page(owner.title, tracksOf(owner));
}

export const searchPath = (text) => pathOf(`search/${encodeURIComponent(text)}`);

const sounds = new Map([...pages.values()].flatMap((p) => p.rows).concat(albums.flatMap(tracksOf))
  .filter((row) => row.sound?.kind === 'track')
  .map((row) => [`${row.sound.title}|${row.sound.album}`, row]));

/** The row of a track that plays or played, as the player's queue shows it. */
export const rowOfSound = (sound) => sounds.get(`${sound.title}|${sound.album}`) ?? null;

/** The tracks that a play command starts. */
export function queueOf(sound) {
  if (sound.kind === 'track') return [sound];
  const owner = albums[sound.number] ?? {
    title: sound.title ?? 'Mixed',
    artist: 'Various artists',
    number: sound.number,
  };
  const tracks = tracksOf(owner).map((row) => row.sound);
  return sound.kind === 'station' ? tracks.reverse() : tracks;
}

/** Where the scenario finds what it needs; see scenario.mjs. */
export const mockTrails = {
  album: ['Albums', 'Harbour Lights'],
  more: ['All tracks'],
  station: ['Stations', 'Coastal folk'],
  error: ['New and noteworthy', 'The Vault Session'],
  ask: ['New and noteworthy', 'The Vault Session'],
  search: 'Blue Hour',
};
