// Where a player may be started: other languages, other times of day, little room in its environment.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { House, State } from '../support/house.mjs';

const places = {
  'H22 no language at all': { LC_ALL: 'C', LANG: '' },
  'H22 Turkish, where the small i has another capital': { LC_ALL: 'tr_TR.UTF-8', LANG: 'tr_TR.UTF-8' },
  'H22 the other side of the date line': { TZ: 'Pacific/Apia' },
  'H22 a time zone that is none': { TZ: ':/no/such/zone' },
  'H22 an environment of 32 kB': { TAVU_FILLER: 'x'.repeat(32 * 1024) },
  'H22 a home that cannot be written': { HOME: '/proc', XDG_CONFIG_HOME: '', XDG_STATE_HOME: '', XDG_CACHE_HOME: '' },
};

for (const [title, playerEnv] of Object.entries(places)) {
  test(title, async () => {
    const house = await House.open({ playerEnv });
    try {
      assert.equal((await house.play(await house.row('Albums', 'Night Trains'))).status, 200);
      const { title: playing } = await house.waitForState(State.playing);
      assert.equal(playing, 'Platform Two');
      await house.told('POST', 'player/volume', { volume: 33 });
      await house.until(async () => (await house.now()).position > 500, 'the sound');
      await house.player.stop();
      assert.deepEqual(house.player.exit, { code: 0, signal: null });
      assert.equal(house.player.findings, '');
      await house.startPlayer();
      await house.signedIn();
      const { title: kept, volume } = await house.now();
      assert.deepEqual({ kept, volume }, { kept: 'Platform Two', volume: 33 });
    } finally {
      await house.close();
    }
  });
}
