// What the mock player plays and whether it is signed in. Time is real, sound is not.
import { queueOf, rowOfSound } from './catalogue.mjs';

const PlayState = { idle: 0, buffering: 1, playing: 2, paused: 3 };

/** What the player tells of the sound: albums are lossless, all else is not. */
const audioOf = (kind) => ({
  ...(kind === 'album'
    ? { codec: 'FLAC', lossless: true, sampleRate: 44100, bitDepth: 16, decoder: 'FLAC decoder' }
    : { codec: 'MP3', lossless: false, sampleRate: 44100, bitRate: 256000, decoder: 'MP3 decoder' }),
  channels: 2,
  source: { encrypted: kind === 'album', renewed: false },
  output: { name: 'Automatic', sink: 'PulseAudio', sampleRate: 48000, channels: 2, bitDepth: 16 },
});

export class MockState {
  constructor(emit) {
    this.emit = emit;
    this.messages = [];
    this.nextMessage = 1;
    this.login = {
      state: 'loggedOut',
      userCode: '',
      verificationUri: '',
      verificationUriComplete: '',
      expiresAt: '',
      expiresIn: 0,
      message: '',
    };
    this.codes = ['QRST-WXYZ', 'BCDF-GHJK', 'LMNP-VTWX'];
    this.outputs = [
      { id: 'auto', name: 'Automatic', selected: true },
      { id: 'dac', name: 'Living room DAC', selected: false },
    ];
    this.volume = 62;
    this.mute = false;
    this.mode = 0;
    this.ratings = new Map();
    this.played = [];
    this.nextKnown = false;
    this.sleep = null;
    this.reset();
  }

  reset() {
    this.queue = [];
    this.at = 0;
    this.state = PlayState.idle;
    this.base = 0;
    this.since = 0;
    this.kind = '';
    this.from = null;
    this.error = null;
  }

  /** The queue as the player tells it; `nextKnown` is set once the next track is prepared. */
  tellQueue() {
    const next = this.nextKnown ? this.queue[(this.at + 1) % this.queue.length] : null;
    return {
      from: this.track ? this.from : null,
      endless: this.kind === 'station',
      played: this.played,
      current: this.track && rowOfSound(this.track),
      next: next && rowOfSound(next),
    };
  }

  prepareNext() {
    this.nextKnown = true;
    this.emit('queue', {});
  }

  /** What plays becomes what has played. */
  leaveTrack() {
    const row = this.track && rowOfSound(this.track);
    if (row) this.played = [...this.played, { at: new Date().toISOString(), row }].slice(-50);
    this.nextKnown = false;
  }

  rate(rating) {
    this.ratings.set(this.track?.title, rating);
    this.told();
  }

  get track() {
    return this.queue[this.at] ?? null;
  }

  position() {
    const moved = this.state === PlayState.playing ? Date.now() - this.since : 0;
    return Math.min(this.base + moved, this.track?.duration ?? 0);
  }

  player() {
    const { track } = this;
    const album = this.kind === 'album';
    return {
      state: this.state,
      position: this.position(),
      at: new Date().toISOString(),
      duration: track?.duration ?? 0,
      title: track?.title ?? '',
      artist: track?.artist ?? '',
      album: track?.album ?? '',
      artwork: track ? `/api/v1/artwork/${track.number}` : '',
      controls: {
        pause: true,
        next: this.queue.length > 1,
        previous: Boolean(track),
        seek: this.kind !== 'station',
        like: Boolean(track),
        dislike: Boolean(track),
      },
      playModes: {
        shuffle: album,
        repeatOne: album,
        repeatAll: album,
        shuffleRepeatOne: false,
        shuffleRepeatAll: album,
      },
      mode: this.mode,
      volume: this.volume,
      mute: this.mute,
      bufferLevel: 100,
      error: this.error,
      output: 'auto',
      sleep: this.sleep ? { ...this.sleep, remaining: Math.max(0, this.sleep.at - Date.now()) } : {},
      audio: this.state > PlayState.buffering ? audioOf(this.kind) : {},
      rating: this.ratings.get(track?.title) ?? '',
    };
  }

  snapshot(serial) {
    return {
      version: '0.1.0',
      serial,
      service: { name: 'Amazon Music', loggedIn: this.login.state === 'loggedIn' },
      login: this.login,
      player: this.player(),
      messages: this.messages,
    };
  }

  told() {
    this.emit('player', this.player());
  }

  moveTo(position, state = this.state) {
    Object.assign(this, { base: position, since: Date.now(), state });
    this.told();
  }

  play(sound, from = null) {
    this.leaveTrack();
    this.from = from;
    Object.assign(this, { queue: queueOf(sound), at: 0, kind: sound.kind, error: null });
    this.moveTo(0, PlayState.buffering);
    clearTimeout(this.starting);
    this.starting = setTimeout(() => this.moveTo(this.base, PlayState.playing), 150);
    this.emit('queue', {});
  }

  step(by) {
    if (by < 0 && this.position() > 3000) return this.moveTo(0);
    this.leaveTrack();
    this.emit('queue', {});
    this.at = (this.at + by + this.queue.length) % this.queue.length;
    return this.moveTo(0, PlayState.playing);
  }

  pause() {
    clearTimeout(this.starting);
    const position = this.position();
    this.moveTo(position, this.state === PlayState.paused ? PlayState.playing : PlayState.paused);
  }

  stop() {
    clearTimeout(this.starting);
    this.leaveTrack();
    this.reset();
    this.emit('queue', {});
    this.told();
  }

  setSleep({ minutes, finishTrack }) {
    this.sleep = minutes > 0 ? { at: Date.now() + minutes * 60000, finishTrack } : null;
    this.told();
  }

  addMessage(kind, title, text, rows) {
    const message = {
      id: `m${this.nextMessage}`,
      at: new Date().toISOString(),
      kind,
      title,
      text,
      source: 'amazonMusic',
      ...(rows ? { rows } : {}),
    };
    this.nextMessage += 1;
    this.messages = [...this.messages, message].slice(-20);
    this.emit('message', message);
  }

  setLogin(values) {
    this.login = { ...this.login, message: '', ...values };
    this.emit('login', this.login);
  }

  startLogin(base, seconds) {
    const userCode = this.codes.shift();
    this.codes.push(userCode);
    this.setLogin({
      state: 'waiting',
      userCode,
      verificationUri: `${base}/link`,
      verificationUriComplete: `${base}/link?code=${userCode}`,
      expiresAt: new Date(Date.now() + seconds * 1000).toISOString(),
      expiresIn: seconds,
    });
  }

  approve() {
    this.setLogin({
      state: 'loggedIn',
      userCode: '',
      verificationUri: '',
      verificationUriComplete: '',
      expiresIn: 0,
    });
  }

  logout() {
    this.stop();
    this.setLogin({ state: 'loggedOut' });
  }
}
