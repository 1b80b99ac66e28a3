// What the mock player plays and whether it is signed in. Time is real, sound is not.
import { queueOf } from './catalogue.mjs';

const PlayState = { idle: 0, buffering: 1, playing: 2, paused: 3 };

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
    this.reset();
  }

  reset() {
    this.queue = [];
    this.at = 0;
    this.state = PlayState.idle;
    this.base = 0;
    this.since = 0;
    this.kind = '';
    this.error = null;
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

  play(sound) {
    Object.assign(this, { queue: queueOf(sound), at: 0, kind: sound.kind, error: null });
    this.moveTo(0, PlayState.buffering);
    clearTimeout(this.starting);
    this.starting = setTimeout(() => this.moveTo(this.base, PlayState.playing), 150);
  }

  step(by) {
    if (by < 0 && this.position() > 3000) return this.moveTo(0);
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
    this.reset();
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
