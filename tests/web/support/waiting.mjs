import assert from 'node:assert/strict';
import { setTimeout as pause } from 'node:timers/promises';

/** Waits on a state, looked at often, and fails with its name. */
export async function eventually(name, state, ms = 30000) {
  const end = Date.now() + ms;
  while (!(await state())) {
    assert.ok(Date.now() < end, `in time: ${name}`);
    await pause(50);
  }
}

/** Reads a stream of events until `take(name, data)` returns true, or fails. */
export async function readEvents(address, take, signal = AbortSignal.timeout(60000)) {
  const response = await fetch(address, { signal });
  assert.equal(response.headers.get('content-type').split(';')[0], 'text/event-stream');
  let text = '';
  for await (const part of response.body.pipeThrough(new TextDecoderStream())) {
    text += part;
    const events = text.split('\n\n');
    text = events.pop();
    for (const event of events) {
      const fields = Object.fromEntries(
        event.split('\n').map((line) => line.split(/: (.*)/s).slice(0, 2)),
      );
      if (fields.event && take(fields.event, JSON.parse(fields.data))) return;
    }
  }
  assert.fail('the stream of events has ended');
}
