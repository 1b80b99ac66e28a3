// The real programs as processes: started, watched, killed. What they say is kept, since that is
// where a sanitizer tells what it found.
import { execFileSync, spawn } from 'node:child_process';
import { readFileSync, readdirSync, readlinkSync, writeFileSync } from 'node:fs';

const startMs = 90000; // the emulator may have to make its albums first
const endMs = 30000;

/** What both sanitizers begin their reports with. */
const finding = /(ERROR: \w+Sanitizer|runtime error:|WARNING: ThreadSanitizer)[^\n]*/;

/** A sanitizer's library wants to be loaded before all others. */
function sanitizers(file) {
  const libraries = execFileSync('ldd', [file], { encoding: 'utf8' });
  return [...libraries.matchAll(/lib[at]san\.so\S* => (\S+)/g)].map((match) => match[1]);
}

/** The environment in which a program's clocks are turned; `time`: the variables that say how. */
export function turnedClock(file, time) {
  return {
    LD_PRELOAD: [...sanitizers(file), '/usr/$LIB/faketime/libfaketimeMT.so.1'].join(' '),
    ...time,
  };
}

export class Program {
  constructor(file, options, env = {}) {
    this.said = '';
    this.ended = false;
    this.child = spawn(file, options, {
      stdio: ['ignore', 'pipe', 'pipe'],
      // Memory that was freed goes back at once, so that growth is growth.
      env: {
        ...process.env,
        ASAN_OPTIONS: 'quarantine_size_mb=1:detect_leaks=0:allocator_release_to_os_interval_ms=100',
        ...env,
      },
    });
    for (const name of ['stdout', 'stderr']) {
      this.child[name].setEncoding('utf8');
      this.child[name].on('data', (text) => { this.said += text; });
    }
    this.end = new Promise((done) => {
      const ended = (code, signal) => {
        this.ended = true;
        this.exit = { code, signal };
        done(this.exit);
      };
      this.child.once('close', ended);
      this.child.once('error', (error) => {
        this.said += `${error.message}\n`; // it cannot be started
        ended(null, null);
      });
    });
  }

  get pid() { return this.child.pid; }

  /** Sanitizer reports so far; empty when all is well. */
  get findings() { return this.said.match(finding)?.[0] ?? ''; }

  /** What `find` takes out of what the program has said, once it is there. */
  async says(find) {
    const until = Date.now() + startMs;
    while (Date.now() < until) {
      const found = find(this.said);
      if (found) return found;
      if (this.ended) break;
      await moment();
    }
    throw new Error(`not ready; it said:\n${this.said.slice(-4000)}`);
  }

  /** The most memory that was in use since the last call, KiB. */
  peak() {
    const status = readFileSync(`/proc/${this.pid}/status`, 'utf8');
    writeFileSync(`/proc/${this.pid}/clear_refs`, '5');
    return Number(/^VmHWM:\s+(\d+)/m.exec(status)[1]);
  }

  /** Memory in KiB, open files by what they are, threads. */
  figures() {
    const status = readFileSync(`/proc/${this.pid}/status`, 'utf8');
    const field = (name) => Number(new RegExp(`^${name}:\\s+(\\d+)`, 'm').exec(status)[1]);
    const folder = `/proc/${this.pid}/fd`;
    const kinds = readdirSync(folder).map((fd) => {
      try {
        return readlinkSync(`${folder}/${fd}`);
      } catch {
        return ''; // closed meanwhile
      }
    });
    const sockets = kinds.filter((kind) => kind.startsWith('socket:')).length;
    return { rss: field('VmRSS'), threads: field('Threads'), sockets, files: kinds.length - sockets };
  }

  /** Ends it as an operator would. */
  async stop() {
    if (this.ended) return;
    const hard = setTimeout(() => this.child.kill('SIGKILL'), endMs);
    this.child.kill();
    await this.end;
    clearTimeout(hard);
  }

  /** Ends it as a power cut would. */
  async kill() {
    this.child.kill('SIGKILL');
    await this.end;
  }
}

/** A turn of a polling wait. */
export function moment(ms = 20) {
  return new Promise((done) => { setTimeout(done, ms); });
}
