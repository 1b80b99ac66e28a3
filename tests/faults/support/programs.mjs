// The real programs as processes: started, watched, killed. What they say is kept, since that is
// where a sanitizer tells what it found.
import { spawn } from 'node:child_process';

const startMs = 60000; // the emulator may have to make its albums first
const endMs = 10000;

/** What both sanitizers begin their reports with. */
const finding = /(ERROR: \w+Sanitizer|runtime error:|WARNING: ThreadSanitizer)[^\n]*/;

export class Program {
  constructor(file, options) {
    this.said = '';
    this.ended = false;
    this.child = spawn(file, options, {
      stdio: ['ignore', 'pipe', 'pipe'],
    });
    for (const name of ['stdout', 'stderr']) {
      this.child[name].setEncoding('utf8');
      this.child[name].on('data', (text) => { this.said += text; });
    }
    this.end = new Promise((done) => {
      this.child.once('close', (code, signal) => {
        this.ended = true;
        this.exit = { code, signal };
        done(this.exit);
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
