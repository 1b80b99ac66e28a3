// What a row of the control API is, and what the page may do with it. Pure functions.

export const RowType = { folder: 1, playable: 3, message: 6, action: 102, link: 106 };
export const AudioType = { track: 1, container: 2 };
export const seeMoreTitle = 'See more results';

const durationSuffix = / \((\d\d):(\d\d):(\d\d)\)$/;

const metaOf = (row) => row?.mediaData?.metaData ?? {};
const firstResource = (row) => row?.mediaData?.resources?.[0] ?? {};

/** Tracks come with their duration at the end of the title; the page shows it in a column. */
export function splitTitle(title) {
  const text = title ?? '';
  const match = durationSuffix.exec(text);
  if (!match) return { title: text, duration: 0 };
  const [h, m, s] = match.slice(1).map(Number);
  return { title: text.slice(0, match.index), duration: ((h * 60 + m) * 60 + s) * 1000 };
}

export function titleOf(row) {
  return row?.type === RowType.playable ? splitTitle(row.title).title : (row?.title ?? '');
}

export function durationOf(row) {
  const given = Number(firstResource(row).duration);
  if (given > 0) return given;
  return row?.type === RowType.playable ? splitTitle(row.title).duration : 0;
}

export const isRatable = (row) => Boolean(row?.likeable && metaOf(row).likeItPath);
export const artistOf = (row) => metaOf(row).artist ?? '';
export const albumOf = (row) => metaOf(row).album ?? '';

/** Address of the picture, or "" when the page's own sign stands in for it. */
export function pictureOf(row) {
  const icon = row?.icon ?? '';
  return icon.startsWith('/api/') ? icon : '';
}

/** The tracks of one record, which all carry its picture: their numbers say more than that. */
export function isRecord(opened, rows) {
  const cover = pictureOf(opened);
  const known = (rows ?? []).filter(Boolean);
  return (
    Boolean(cover) &&
    known.length > 0 &&
    known.every(
      (row) =>
        row.type === RowType.playable &&
        row.audioType === AudioType.track &&
        pictureOf(row) === cover,
    )
  );
}

/** Which of the page's own signs fits a row without a picture. */
export function signOf(row) {
  if (row?.type === RowType.playable) {
    return row.audioType === AudioType.container ? 'station' : 'note';
  }
  if (row?.icon?.startsWith('skin:')) return 'note';
  return row?.containerPlayable ? 'disc' : 'folder';
}

/** How the rows behind a row are most likely laid out, to keep their place until they come. */
export function expectedLayout(opened) {
  if (!pictureOf(opened)) return 'list';
  return opened.playable ? 'list numbered' : 'grid';
}

const httpUrl = /^https?:\/\//i;

/** What a link row may offer: web addresses only, whatever the service sends. */
export function linkOf(row) {
  const uri = row?.link ?? firstResource(row).uri ?? '';
  return httpUrl.test(uri) ? uri : '';
}

const screenTypes = new Set([RowType.message, RowType.action, RowType.link]);

/** A page of the service that is one message with buttons, not a list. */
export function isMessageScreen(rows) {
  if (!rows?.length || rows[0]?.type !== RowType.message) return false;
  return rows.every((row) => row && screenTypes.has(row.type));
}

/** What a page says in a single row that leads nowhere, as that nothing was found, or "". */
export function wordsOf(rows) {
  const [row] = rows ?? [];
  const leads = row?.openable || row?.playable || screenTypes.has(row?.type);
  return rows?.length === 1 && !leads ? titleOf(row) : '';
}

/** The last row of a page that has another one. */
export function isSeeMore(row, index, count) {
  return (
    index === count - 1 &&
    row?.type === RowType.folder &&
    row.title === seeMoreTitle &&
    !row.mediaData &&
    Boolean(row.path)
  );
}

const mostTiles = 12;

/**
 * "grid" for covers to look at, "tiles" for a short choice of folders without pictures, "list" for
 * everything to read. Judged by the first rows of a page.
 */
export function layoutOf(rows) {
  const plain = (rows ?? []).filter(
    (row, i) => row && !row.absent && !isSeeMore(row, i, rows.length),
  );
  if (plain.some((row) => screenTypes.has(row.type))) return 'list';
  const bare = plain.every((row) => row.type === RowType.folder && !row.playable && !row.icon);
  if (bare && plain.length > 1 && plain.length <= mostTiles) return 'tiles';
  if (plain.some((row) => row.type === RowType.playable && row.audioType === AudioType.track)) {
    return 'list';
  }
  const pictured = plain.filter((row) => pictureOf(row)).length;
  return plain.length > 1 && pictured * 2 > plain.length ? 'grid' : 'list';
}
