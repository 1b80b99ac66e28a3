// What the device itself shows of the music: lock screen, media keys, the car. The music plays
// elsewhere, and most browsers show only pages that sound; so a reader may let this page play
// silence (`audible`), which is off unless asked for.

import { hasTrack, PlayState, positionAt } from './reducer.js';

const stepSeconds = 10;

const stateNames = {
  [PlayState.idle]: 'none',
  [PlayState.buffering]: 'playing',
  [PlayState.playing]: 'playing',
  [PlayState.paused]: 'paused',
};

/** Title, artist, album and picture of what plays, or null. `address` makes the picture's absolute. */
export function metadataOf(player, address) {
  if (!hasTrack(player)) return null;
  const { title = '', artist = '', album = '', artwork } = player;
  return { title, artist, album, artwork: artwork ? [{ src: address(artwork) }] : [] };
}

/** Seconds, or null where there is no end to reckon with, as with stations. */
export function positionStateOf(player, now) {
  if (!(player?.state > 0) || !(player.duration > 0)) return null;
  return { duration: player.duration / 1000, position: positionAt(player, now) / 1000, playbackRate: 1 };
}

/** What each key of the device does, or null for one that can do nothing now. */
export function handlersOf(player, actions, now) {
  const { controls = {}, state = 0 } = player ?? {};
  const sounds = state === PlayState.playing || state === PlayState.buffering;
  const canSeek = controls.seek && player.duration > 0;
  const seekTo = (ms) => actions.seek(Math.min(player.duration, Math.max(0, ms)));
  const seekBy = (direction) => (details) =>
    seekTo(positionAt(player, now()) + direction * (details?.seekOffset ?? stepSeconds) * 1000);
  const pausable = state > 0 && controls.pause !== false;
  return {
    play: pausable ? () => !sounds && actions.pause() : null,
    pause: pausable ? () => sounds && actions.pause() : null,
    stop: state > 0 ? () => actions.stop() : null,
    nexttrack: controls.next ? () => actions.next() : null,
    previoustrack: controls.previous ? () => actions.previous() : null,
    seekbackward: canSeek ? seekBy(-1) : null,
    seekforward: canSeek ? seekBy(1) : null,
    seekto: canSeek ? (details) => seekTo(details.seekTime * 1000) : null,
  };
}

const sameMetadata = (a, b) => JSON.stringify(a) === JSON.stringify(b);

/**
 * Keeps the browser's session (`session`, see navigator.mediaSession) true to the store. `silence`
 * plays or pauses the page's own silence, where the reader wants it.
 */
export function followMediaSession({ session, store, actions, address, now, silence, Metadata }) {
  if (!session) return;
  let shown;
  let player;
  const set = (work) => {
    try {
      work();
    } catch {
      // this browser knows less than others
    }
  };
  const update = () => {
    if (store.state.player === player) return;
    player = store.state.player;
    const metadata = metadataOf(player, address);
    if (!sameMetadata(metadata, shown)) {
      shown = metadata;
      session.metadata = metadata && new Metadata(metadata);
    }
    session.playbackState = stateNames[player?.state ?? PlayState.idle] ?? 'none';
    set(() => session.setPositionState(positionStateOf(player, now()) ?? undefined));
    for (const [name, handler] of Object.entries(handlersOf(player, actions, now)))
      set(() => session.setActionHandler(name, handler));
    silence?.follow(session.playbackState);
  };
  store.subscribe(update);
  update();
}
