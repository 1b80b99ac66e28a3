// What both pages need: asking the emulator, and making elements without markup in texts.

export const kinds = ['browse', 'search', 'playable', 'chunk', 'instance', 'audio', 'artwork', 'report',
  'rating', 'action', 'selection', 'login', 'token', 'approval', 'other'];

export async function ask(method, address, body) {
  const options = {method};
  if (body !== undefined) {
    options.headers = {'content-type': 'application/json'};
    options.body = JSON.stringify(body);
  }
  const answer = await fetch(address, options);
  const json = await answer.json();
  if (!answer.ok)
    throw new Error(json.error ?? `The emulator answers ${answer.status}.`);
  return json;
}

export function make(name, attributes = {}, ...children) {
  const element = document.createElement(name);
  for (const [key, value] of Object.entries(attributes)) {
    if (key.startsWith('on'))
      element.addEventListener(key.slice(2), value);
    else if (value !== false && value !== undefined)
      element.setAttribute(key, value === true ? '' : value);
  }
  element.append(...children);
  return element;
}

export function fillKinds(select) {
  select.append(...kinds.map((kind) => make('option', {value: kind}, kind)));
}

export function say(text, bad = false) {
  const status = document.getElementById('status');
  status.textContent = text;
  status.classList.toggle('bad', bad);
}

/**
 * Shows what `question` is answered, each second and whenever the returned function is called. Only the
 * newest question counts, whichever answer comes first; one that is null is not asked.
 */
export function follow(question, show) {
  let newest = null;
  async function refresh() {
    const asked = question();
    newest = asked;
    if (!asked)
      return;
    try {
      const answer = await asked;
      if (asked === newest)
        show(answer);
    } catch (error) {
      if (asked === newest)
        say(`The emulator does not answer: ${error.message}`, true);
    }
    if (asked === newest)
      newest = null;
  }
  setInterval(() => newest ?? refresh(), 1000);
  return refresh;
}
