import assert from 'node:assert/strict';
import { test } from 'node:test';

import {
  createListing,
  createListings,
  entriesOf,
  isAtOrBelow,
} from '../../../src/player/web/js/listing.js';

const settled = () =>
  new Promise((done) => {
    setImmediate(done);
  });
const more = (path) => ({ type: 1, title: 'See more results', path });

/** Pages by path; answers like the player and remembers what it was asked. */
function fakeApi(pages) {
  const asked = [];
  return {
    asked,
    failing: 0,
    async rows(path, from, to) {
      asked.push(`${path} ${from}-${to}`);
      if (this.failing > 0) {
        this.failing -= 1;
        throw new Error('down');
      }
      const rows = pages[path];
      return { parent: {}, rows: rows.slice(from, to + 1), from, count: rows.length };
    },
  };
}

const tracks = (count) => Array.from({ length: count }, (_, i) => ({ type: 3, title: `T${i}` }));

test('a list asks for its first fifty rows and knows where the others will be', async () => {
  const api = fakeApi({ '/a': tracks(120) });
  const listing = createListing('/a', api);
  await listing.load();
  const entries = entriesOf(listing);
  assert.deepEqual(api.asked, ['/a 0-49']);
  assert.equal(entries.length, 120);
  assert.equal(entries[49].row.title, 'T49');
  assert.equal(entries[50].row, null);
});

test('a list that is asked for anew shows the newer answer, whichever comes last', async () => {
  const answers = [];
  const listing = createListing('/a', {
    rows: () =>
      new Promise((done) => {
        answers.push((rows) => done({ rows, from: 0, count: rows.length }));
      }),
  });
  const loads = [listing.load(), listing.load()];
  answers[1](tracks(2));
  await settled();
  answers[0](tracks(1));
  await Promise.all(loads);
  assert.equal(entriesOf(listing).length, 2);
});

test('a row that comes near brings its window, once', async () => {
  const api = fakeApi({ '/a': tracks(120) });
  const listing = createListing('/a', api);
  await listing.load();
  await Promise.all([listing.ensure(0, 110), listing.ensure(0, 119)]);
  await listing.ensure(0, 100);
  assert.deepEqual(api.asked, ['/a 0-49', '/a 100-149']);
  assert.equal(entriesOf(listing)[119].row.title, 'T119');
  assert.equal(entriesOf(listing)[60].row, null);
});

test('a window that failed says so and is tried again on request only', async () => {
  const api = fakeApi({ '/a': tracks(120) });
  const listing = createListing('/a', api);
  await listing.load();
  api.failing = 1;
  await listing.ensure(0, 60);
  assert.equal(entriesOf(listing)[50].failed, true);
  await listing.ensure(0, 60);
  assert.equal(api.asked.length, 2);
  await listing.ensure(0, 60, true);
  assert.equal(entriesOf(listing)[60].row.title, 'T60');
});

test('the rows behind "See more results" take that row\'s place', async () => {
  const api = fakeApi({ '/a': [...tracks(3), more('/b')], '/b': tracks(2) });
  const listing = createListing('/a', api);
  await listing.load();
  assert.equal(listing.moreRow().path, '/b');
  await listing.follow();
  assert.deepEqual(
    entriesOf(listing).map(({ row }) => row.title),
    ['T0', 'T1', 'T2', 'T0', 'T1'],
  );
  assert.equal(listing.moreRow(), null);
});

test('a page that leads to itself is not followed round and round', async () => {
  const api = fakeApi({ '/a': [...tracks(1), more('/a')] });
  const listing = createListing('/a', api);
  await listing.load();
  assert.equal(listing.moreRow(), null);
  await listing.follow();
  assert.equal(api.asked.length, 1);
});

test('a next page that cannot be had leaves the row to press again', async () => {
  const api = fakeApi({ '/a': [...tracks(1), more('/b')], '/b': tracks(1) });
  const listing = createListing('/a', api);
  await listing.load();
  api.failing = 1;
  await assert.rejects(listing.follow());
  assert.equal(listing.following, false);
  assert.equal(listing.moreRow().path, '/b');
});

test('fewer rows than counted leave no placeholder that never fills', async () => {
  const api = {
    rows: async () => ({ path: '/a', parent: {}, rows: tracks(3), from: 0, count: 5 }),
  };
  const listing = createListing('/a', api);
  await listing.load();
  assert.ok(entriesOf(listing).every(({ row }) => row));
  assert.equal(entriesOf(listing)[4].row.absent, true);
});

test('an unknown count is what came', async () => {
  const api = { rows: async () => ({ path: '/a', rows: tracks(3), from: 0, count: -1 }) };
  const listing = createListing('/a', api);
  await listing.load();
  assert.equal(entriesOf(listing).length, 3);
});

test('a list that failed keeps its error until it is retried', async () => {
  const api = fakeApi({ '/a': tracks(1) });
  api.failing = 1;
  const listings = createListings(api);
  const listing = listings.open('/a');
  await settled();
  assert.equal(listing.status, 'failed');
  listings.open('/a');
  assert.equal(api.asked.length, 1, 'looking again asks nothing');
  listings.retry('/a');
  await settled();
  assert.equal(listing.status, 'ready');
});

test('a list seen before comes back without a request', async () => {
  const api = fakeApi({ '/a': tracks(1), '/b': tracks(1) });
  const listings = createListings(api);
  const first = listings.open('/a');
  await settled();
  listings.open('/b');
  await settled();
  assert.equal(listings.open('/a'), first);
  assert.equal(api.asked.length, 2);
});

test('changed rows are asked for again where they show and forgotten elsewhere', async () => {
  const api = fakeApi({ '': tracks(1), '/a': tracks(1) });
  const listings = createListings(api);
  const root = listings.open('');
  const other = listings.open('/a');
  await settled();
  listings.changed('/a', '');
  await settled();
  assert.equal(listings.open(''), root, 'the shown list stays the same list');
  assert.equal(api.asked.filter((line) => line.startsWith(' 0')).length, 2);
  assert.notEqual(listings.open('/a'), other);
});

test('a change reaches what stands below it, up to a border between components', () => {
  for (const path of ['/a', '/a/b', '/a?url=1', '/a&x'])
    assert.equal(isAtOrBelow(path, '/a'), true);
  for (const path of ['/ab', '/b', '']) assert.equal(isAtOrBelow(path, '/a'), false);
  assert.equal(isAtOrBelow('/a/b', '/a/'), true);
});

test('only so many lists are kept', async () => {
  const pages = Object.fromEntries(Array.from({ length: 5 }, (_, i) => [`/${i}`, tracks(1)]));
  const api = fakeApi(pages);
  const listings = createListings(api, 3);
  for (const path of Object.keys(pages)) listings.open(path);
  await settled();
  listings.open('/0');
  await settled();
  assert.equal(api.asked.length, 6);
});
