// The real programs behind a page, as a user starts them: see House.
import { House } from '../../support/house.mjs';
import { reach } from './slowness.mjs';

/**
 * Both programs, running, with nobody signed in: { url, control, service, close }: the addresses of
 * the player, the fault dial and the service. `emulator` holds further options of the one, `settings`
 * further settings of the other.
 */
export async function startPrograms({
  pageSize = 8,
  autoApprove = false,
  emulator = [],
  settings = {},
} = {}) {
  const options = [
    ...['--page-size', String(pageSize), '--key-headers-every', '4'],
    ...(autoApprove ? ['--auto-approve'] : []),
    ...emulator,
  ];
  const house = await House.open({ emulator: options, settings, signedIn: false });
  const { control, baseUrl } = house.service;
  const { url, close } = await reach(house.url);
  return {
    url,
    control,
    service: baseUrl,
    close() {
      close();
      return house.close();
    },
  };
}

/** What the emulator's sample albums are called, as trails of scenario.mjs. */
export const sampleTrails = {
  album: ['Albums', 'Night Trains'],
  more: ['Tracks'],
  station: ['Stations', 'Folk Station'],
  error: ['Messages', 'A song outside your plan'],
  ask: ['Messages', 'A song that asks where to play'],
  search: 'Night Trains',
};
