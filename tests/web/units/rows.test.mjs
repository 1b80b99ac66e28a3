import assert from 'node:assert/strict';
import { test } from 'node:test';

import {
  durationOf,
  expectedLayout,
  isMessageScreen,
  isRecord,
  isSeeMore,
  layoutOf,
  linkOf,
  pictureOf,
  signOf,
  splitTitle,
  titleOf,
  wordsOf,
} from '../../../src/player/web/js/rows.js';

const track = (more) => ({ type: 3, audioType: 1, title: 'Song (00:03:21)', ...more });
const seeMore = { type: 1, title: 'See more results', path: '/browse?url=2' };

test('the duration at the end of a track title becomes a column', () => {
  assert.deepEqual(splitTitle('Song (00:03:21)'), { title: 'Song', duration: 201000 });
  assert.deepEqual(splitTitle('Long (01:02:03)'), { title: 'Long', duration: 3723000 });
});

test('other brackets of a title stay', () => {
  assert.equal(titleOf(track({ title: 'Song (live)' })), 'Song (live)');
  assert.equal(titleOf(track({ title: 'Song (00:03:21) remix' })), 'Song (00:03:21) remix');
});

test('only playable rows carry a duration in their title', () => {
  const folder = { type: 1, title: 'Album (00:03:21)' };
  assert.equal(titleOf(folder), 'Album (00:03:21)');
  assert.equal(durationOf(folder), 0);
});

test('a duration of the resource goes before that of the title', () => {
  assert.equal(durationOf(track({ mediaData: { resources: [{ duration: 5000 }] } })), 5000);
  assert.equal(durationOf(track({ mediaData: { resources: [{ duration: 0 }] } })), 201000);
});

test('pictures come from the player only', () => {
  assert.equal(pictureOf({ icon: '/api/v1/artwork/7' }), '/api/v1/artwork/7');
  assert.equal(pictureOf({ icon: 'skin:iconMusic' }), '');
  assert.equal(pictureOf({ icon: 'https://elsewhere.test/a.jpg' }), '');
  assert.equal(pictureOf({}), '');
});

test('a row without a picture gets the sign of its kind', () => {
  assert.equal(signOf({ type: 3, audioType: 2 }), 'station');
  assert.equal(signOf(track()), 'note');
  assert.equal(signOf({ type: 1, icon: 'skin:iconMusic' }), 'note');
  assert.equal(signOf({ type: 1, containerPlayable: true }), 'disc');
  assert.equal(signOf({ type: 1 }), 'folder');
});

test('a link offers web addresses and nothing else', () => {
  assert.equal(linkOf({ type: 106, link: 'https://a.test/x' }), 'https://a.test/x');
  assert.equal(linkOf({ mediaData: { resources: [{ uri: 'http://a.test' }] } }), 'http://a.test');
  for (const uri of ['javascript:alert(1)', 'data:text/html,x', '//a.test', 'a.test', '']) {
    assert.equal(linkOf({ type: 106, link: uri }), '');
  }
});

test('a page is a message when it begins with one and only buttons follow', () => {
  assert.equal(isMessageScreen([{ type: 6 }, { type: 106 }, { type: 102 }]), true);
  assert.equal(isMessageScreen([{ type: 6 }]), true);
  assert.equal(isMessageScreen([{ type: 6 }, track()]), false);
  assert.equal(isMessageScreen([track(), { type: 6 }]), false);
  assert.equal(isMessageScreen([]), false);
  assert.equal(isMessageScreen(undefined), false);
});

test('a page of one row that leads nowhere says something, and is no list', () => {
  assert.equal(wordsOf([{ title: 'Nothing was found.' }]), 'Nothing was found.');
  assert.equal(wordsOf([{ title: 'Folder', type: 1, openable: true }]), '');
  assert.equal(wordsOf([track({ playable: true })]), '');
  assert.equal(wordsOf([{ title: 'Message', type: 6 }]), '');
  assert.equal(wordsOf([{ title: 'One' }, { title: 'Two' }]), '');
  assert.equal(wordsOf([{ absent: true }]), '');
  assert.equal(wordsOf([]), '');
  assert.equal(wordsOf(undefined), '');
});

test('only the last row can lead to more results', () => {
  assert.equal(isSeeMore(seeMore, 9, 10), true);
  assert.equal(isSeeMore(seeMore, 8, 10), false);
  assert.equal(isSeeMore({ ...seeMore, title: 'See More Results' }, 9, 10), false);
  assert.equal(isSeeMore({ ...seeMore, mediaData: {} }, 9, 10), false);
  assert.equal(isSeeMore(undefined, 9, 10), false);
});

const cover = (number, more) => ({
  type: 1,
  icon: `/api/v1/artwork/${number}`,
  playable: true,
  ...more,
});

test('covers are laid out as a grid, tracks and mixed pages as a list', () => {
  assert.equal(layoutOf([cover(1), cover(2), cover(3)]), 'grid');
  assert.equal(layoutOf([cover(1), cover(2), seeMore]), 'grid');
  assert.equal(layoutOf([cover(1), track({ icon: '/api/v1/artwork/2' })]), 'list');
  assert.equal(layoutOf([cover(1), { type: 6 }]), 'list');
  assert.equal(layoutOf([]), 'list');
});

test('a short choice of bare folders is laid out as tiles, a long one as a list', () => {
  const folders = (count) => Array.from({ length: count }, (_, i) => ({ type: 1, title: `${i}` }));
  assert.equal(layoutOf(folders(5)), 'tiles');
  assert.equal(layoutOf(folders(13)), 'list');
  assert.equal(layoutOf(folders(1)), 'list');
});

test('the tracks of a record are told by its picture on all of them', () => {
  const tracks = [track({ icon: '/api/v1/artwork/1' }), track({ icon: '/api/v1/artwork/1' })];
  assert.equal(isRecord(cover(1), tracks), true);
  assert.equal(isRecord(cover(2), tracks), false);
  assert.equal(isRecord(null, tracks), false);
  assert.equal(isRecord(cover(1), []), false);
});

test('what was opened tells how its rows will most likely be laid out', () => {
  const icon = '/api/v1/artwork/1';
  assert.equal(expectedLayout({ type: 1, icon, playable: true }), 'list numbered');
  assert.equal(expectedLayout({ type: 1, icon }), 'grid');
  assert.equal(expectedLayout({ type: 1 }), 'list');
  assert.equal(expectedLayout(null), 'list');
});
