import { html } from '../html.js';
import { useRef, useState } from '../../vendor/hooks.js';
import { useApp, useNow, useOffline, useStore } from '../context.js';
import { clock, spokenTime } from '../format.js';
import {
  modeParts,
  nextRepeat,
  repeatSupported,
  shuffleSupported,
  toggledShuffle,
} from '../modes.js';
import { PlayState, positionAt } from '../reducer.js';
import { t } from '../text.js';
import { Button, Slider } from './controls.js';

const keySteps = { ArrowLeft: -5000, ArrowDown: -5000, ArrowRight: 5000, ArrowUp: 5000 }; // ms

/**
 * A slider that follows the player, except while a hand is on it and until the player has answered
 * and told of it: what it told before that is from before the hand.
 */
function useHeld(followed) {
  const [held, setHeld] = useState(null);
  const since = useRef(null);
  const stamp = useRef();
  const latest = useRef(null);
  stamp.current = followed.stamp;
  if (held !== null && since.current !== null && since.current !== followed.stamp) {
    since.current = null;
    setHeld(null);
  }
  return {
    value: held ?? followed.value,
    hold(value) {
      latest.current = null;
      since.current = null;
      setHeld(value);
    },
    async release(answer) {
      const before = stamp.current;
      latest.current = answer;
      const done = await answer;
      if (latest.current !== answer) return;
      if (done && stamp.current === before) since.current = before;
      else setHeld(null);
    },
  };
}

export function Seek() {
  const { actions } = useApp();
  const offline = useOffline();
  const player = useStore((state) => state.player);
  const now = useNow(player?.state === PlayState.playing);
  const duration = player?.duration > 0 ? player.duration : 0;
  const held = useHeld({ value: positionAt(player, now), stamp: player?.receivedAt });
  const can = Boolean(player?.controls?.seek) && duration > 0;
  const text = t('player.positionOf', {
    position: spokenTime(held.value),
    duration: spokenTime(duration),
  });
  const commit = (value) => {
    held.hold(value);
    held.release(actions.seek(value));
  };
  const onKeyDown = (event) => {
    const step = keySteps[event.key];
    if (!step) return;
    event.preventDefault();
    commit(Math.min(duration, Math.max(0, held.value + step)));
  };
  return html`<div class="seek">
    <${Slider} label=${t('player.position')} max=${duration || 1} step="1"
      value=${Math.floor(held.value)} text=${text} disabled=${!can || offline}
      onInput=${(event) => held.hold(Number(event.currentTarget.value))}
      onChange=${(event) => commit(Number(event.currentTarget.value))} onKeyDown=${onKeyDown} />
    <span class="time">${clock(held.value)}</span>
    <span class="time end">${duration ? clock(duration) : '–:––'}</span>
  </div>`;
}

/** Whether a command that was asked for has not been answered yet. */
const useBusy = (name) => useStore((s) => s.busy[name] > 0);

export function PlayPause({ kind = 'main', iconSize = 28 }) {
  const { actions } = useApp();
  const state = useStore((s) => s.player?.state ?? PlayState.idle);
  const can = useStore((s) => s.player?.controls?.pause !== false && (s.player?.state ?? 0) > 0);
  const running = state === PlayState.playing || state === PlayState.buffering;
  return html`<${Button} kind=${`${kind}${state === PlayState.buffering ? ' buffering' : ''}`}
    icon=${running ? 'pause' : 'play'} iconSize=${iconSize} unavailable=${!can}
    busy=${useBusy('pause')}
    label=${t(running ? 'player.pause' : 'player.resume')} onClick=${actions.pause} />`;
}

export function Next() {
  const { actions } = useApp();
  const can = useStore((s) => Boolean(s.player?.controls?.next));
  return html`<${Button} kind="round" icon="next" label=${t('player.next')} unavailable=${!can}
    busy=${useBusy('next')} onClick=${actions.next} />`;
}

export function Transport() {
  const { actions } = useApp();
  const controls = useStore((s) => s.player?.controls) ?? {};
  return html`<div class="transport" role="group" aria-label=${t('player.controls')}>
    <${Shuffle} />
    <${Button} kind="round" icon="previous" label=${t('player.previous')}
      tip=${t('player.previousRule')} unavailable=${!controls.previous}
      busy=${useBusy('previous')} onClick=${actions.previous} />
    <${PlayPause} />
    <${Next} />
    <${Repeat} />
  </div>`;
}

export function Rating({ which }) {
  const { actions } = useApp();
  const can = useStore((s) => Boolean(s.player?.controls?.[which === 'up' ? 'like' : 'dislike']));
  const rated = useStore((s) => s.player?.rating);
  return html`<${Button} kind="round" icon=${which} pressed=${rated === which} unavailable=${!can}
    label=${t(which === 'up' ? 'player.like' : 'player.dislike')}
    tip=${rated === which ? t('player.rated') : null}
    busy=${useBusy(which === 'up' ? 'like' : 'dislike')} onClick=${() => actions.rate(which)} />`;
}

export function Stop() {
  const { actions } = useApp();
  const active = useStore((s) => (s.player?.state ?? 0) > 0);
  return html`<${Button} kind="round" icon="stop" label=${t('player.stop')} unavailable=${!active}
    busy=${useBusy('stop')} onClick=${actions.stop} />`;
}

const EmptyPlace = () => html`<span class="place-keeper"></span>`;

/** Shuffle and repeat show only where what plays supports them; their places stay. */
function Shuffle() {
  const { actions } = useApp();
  const mode = useStore((s) => s.player?.mode ?? 0);
  const supported = useStore((s) => s.player?.playModes) ?? {};
  if (!shuffleSupported(supported)) return html`<${EmptyPlace} />`;
  return html`<${Button} kind="round" icon="shuffle" label=${t('player.shuffle')}
    pressed=${modeParts(mode).shuffle}
    onClick=${() => actions.setMode((now) => toggledShuffle(now, supported))} />`;
}

function Repeat() {
  const { actions } = useApp();
  const mode = useStore((s) => s.player?.mode ?? 0);
  const supported = useStore((s) => s.player?.playModes) ?? {};
  const { repeat } = modeParts(mode);
  if (!repeatSupported(supported)) return html`<${EmptyPlace} />`;
  return html`<${Button} kind=${`round ${repeat === 'off' ? '' : 'on'}`}
    icon=${repeat === 'one' ? 'repeatOne' : 'repeat'}
    label=${t('player.repeat', { which: t(`player.repeat.${repeat}`) })}
    onClick=${() => actions.setMode((now) => nextRepeat(now, supported))} />`;
}

/** How far the track is, for the eye only; the slider says it to everybody. */
export function Progress() {
  const player = useStore((s) => s.player);
  const now = useNow(player?.state === PlayState.playing, 1000);
  const share = player?.duration > 0 ? (positionAt(player, now) / player.duration) * 100 : 0;
  return html`<span class="progress" aria-hidden="true">
    <i style=${{ width: `${share}%` }}></i></span>`;
}

export function Volume() {
  const { actions } = useApp();
  const offline = useOffline();
  const player = useStore((s) => s.player);
  const held = useHeld({ value: player?.volume ?? 0, stamp: player?.volume });
  if (player?.volume === undefined || player.volume === null) return null;
  const muted = Boolean(player.mute);
  return html`<div class="volume">
    <${Button} kind="round" icon=${muted ? 'muted' : 'volume'} label=${t('player.mute')}
      pressed=${muted} onClick=${() => actions.setMute(!muted)} />
    <${Slider} label=${t('player.volume')} max=${100} step="1" value=${held.value}
      text=${t('player.volumeOf', { volume: held.value })} disabled=${offline}
      onInput=${(event) => held.hold(Number(event.currentTarget.value))}
      onChange=${(event) => {
        const volume = Number(event.currentTarget.value);
        held.hold(volume);
        held.release(actions.setVolume(volume));
      }} />
  </div>`;
}
