import assert from 'node:assert/strict';
import { test } from 'node:test';

import { createApi } from '../../../src/player/web/js/api.js';

const answer = (status, body) => ({
  ok: status < 400,
  status,
  statusText: 'Text',
  json: async () => JSON.parse(body),
});

function setUp(reply, options = {}) {
  const sent = [];
  const api = createApi({
    fetch: async (url, init) => {
      sent.push({ url, ...init });
      return reply();
    },
    ...options,
  });
  return { api, sent };
}

test('a state change is a POST with JSON', async () => {
  const { api, sent } = setUp(() => answer(200, '{}'));
  await api.play('r1');
  assert.equal(sent[0].method, 'POST');
  assert.equal(sent[0].url, '/api/v1/play');
  assert.equal(sent[0].headers['Content-Type'], 'application/json');
  assert.equal(sent[0].body, '{"ref":"r1"}');
});

test('a path goes into the query whole', async () => {
  const { api, sent } = setUp(() => answer(200, '{"rows":[]}'));
  const path = '/b?url=https%3A%2F%2Fa.test%2F%26+ü';
  await api.rows(path, 0, 49);
  const url = new URL(sent[0].url, 'http://player');
  assert.equal(url.searchParams.get('path'), path);
  assert.equal(url.searchParams.get('to'), '49');
});

test('the root is asked for without a path', async () => {
  const { api, sent } = setUp(() => answer(200, '{"rows":[]}'));
  await api.rows('', 0, 49);
  assert.equal(sent[0].url, '/api/v1/rows?from=0&to=49');
});

test('a problem keeps the words of the player and the screen that goes with it', async () => {
  const { api } = setUp(() =>
    answer(
      409,
      JSON.stringify({
        type: 'about:blank',
        title: 'T',
        detail: 'D',
        status: 409,
        actionReply: { result: { path: '/d/1' } },
      }),
    ),
  );
  await assert.rejects(api.play('r'), (error) => {
    assert.equal(error.title, 'T');
    assert.equal(error.detail, 'D');
    assert.equal(error.status, 409);
    assert.equal(error.screenPath, '/d/1');
    return true;
  });
});

test('a failure that is no problem document still says its status', async () => {
  const { api } = setUp(() => answer(500, '<html>'));
  await assert.rejects(api.state(), { title: '500 Text', status: 500, screenPath: '' });
});

test('a player that cannot be reached is told apart from one that answers', async () => {
  let unreachable = 0;
  const { api } = setUp(
    () => {
      throw new TypeError('fetch');
    },
    {
      onUnreachable: () => {
        unreachable += 1;
      },
    },
  );
  await assert.rejects(api.state(), { title: 'The player does not answer' });
  assert.equal(unreachable, 1);
});

test('a missing access code is reported as such', async () => {
  let refused = 0;
  const { api } = setUp(() => answer(401, '{"title":"Not allowed"}'), {
    onRefused: () => {
      refused += 1;
    },
  });
  await assert.rejects(api.state(), { title: 'Not allowed' });
  assert.equal(refused, 1);
});

test('a refusal of the code before says nothing of the one that holds now', async () => {
  let code = 'wrong';
  let refused = 0;
  const refuseLate = () => {
    code = 'right';
    return answer(401, '{"title":"Not allowed"}');
  };
  const { api } = setUp(refuseLate, {
    token: () => code,
    onRefused: () => {
      refused += 1;
    },
  });
  await assert.rejects(api.state(), { title: 'Not allowed' });
  assert.equal(refused, 0);
});

test('an access code goes into the header, and into addresses that the browser fetches', async () => {
  const { api, sent } = setUp(() => answer(200, '{}'), { token: () => 'a&b' });
  await api.state();
  assert.equal(sent[0].headers.Authorization, 'Bearer a&b');
  assert.equal(api.eventsAddress(), '/api/v1/events?token=a%26b');
  assert.equal(api.qrAddress('1'), '/api/v1/login/qr.svg?v=1&token=a%26b');
  assert.equal(api.address(''), '');
});

test('an address without an access code stays as it is', () => {
  const { api } = setUp(() => answer(200, '{}'));
  assert.equal(api.address('/api/v1/artwork/1'), '/api/v1/artwork/1');
});
