import {ask, fillKinds, follow, make, say} from './page.js';

const quick = [
  ['Service down, three requests', {kind: 'browse', effect: 'status', status: 503, times: 3}],
  ['Token refused once', {effect: 'unauthorized', times: 1}],
  ['Answers take five seconds', {kind: 'browse', delay: 5000}],
  ['Next page never comes', {kind: 'browse', effect: 'hang', times: 1}],
  ['Next page is broken', {kind: 'browse', effect: 'bad-json', times: 1}],
  ['Stream addresses last five seconds', {kind: 'chunk', effect: 'expire', in: 5000}],
  ['Next sound stops in the middle', {kind: 'audio', effect: 'stall', after: 200000, times: 1}],
  ['Next sound is missing', {kind: 'audio', effect: 'status', status: 404, times: 1}],
  ['Next start is refused', {kind: 'report', effect: 'conflict', label: 'Close', times: 1}],
  ['Ratings ask to skip', {kind: 'rating', effect: 'rating', message: 'We skip this one.'}],
  ['Service moves to eu', {kind: 'browse', effect: 'redirect', toHost: 'eu.music.localhost', times: 1}],
];
const ruleFields = ['id', 'name', 'hits', 'times', 'effect', 'path', 'kind', 'host', 'method', 'listener', 'skip', 'delay'];
const form = document.getElementById('form');
const effect = document.getElementById('effect');
let effects = [];

function strikes(rule) {
  const parts = ['kind', 'path', 'host', 'method', 'listener']
    .filter((field) => rule[field]).map((field) => `${field} ${rule[field]}`);
  const first = rule.skip ? `after ${rule.skip}, ` : '';
  const count = rule.times === 'forever' ? 'every request' : rule.times === 1 ? '1 request' : `${rule.times} requests`;
  return `${first}${count}${parts.length ? ': ' : ''}${parts.join(', ')}`;
}

function happens(rule) {
  const parameters = Object.keys(rule).filter((key) => !ruleFields.includes(key))
    .map((key) => `${key}=${typeof rule[key] === 'object' ? JSON.stringify(rule[key]) : rule[key]}`);
  if (rule.delay)
    parameters.unshift(`delay=${rule.delay}`);
  return [rule.effect, ...parameters].join(' ');
}

function row(rule) {
  const spent = rule.times !== 'forever' && rule.hits >= rule.times;
  const remove = make('button', {type: 'button', 'aria-label': `Remove rule ${rule.id}, ${rule.name}`,
    onclick: () => change('DELETE', `faults/${rule.id}`)}, 'Remove');
  return make('tr', {class: spent ? 'spent' : ''}, make('td', {}, `${rule.id} ${rule.name}`),
    make('td', {}, strikes(rule)), make('td', {}, make('code', {}, happens(rule))),
    make('td', {}, spent ? `${rule.hits}, spent` : `${rule.hits}`), make('td', {}, remove));
}

const question = () => Promise.all([ask('GET', 'faults'), ask('GET', 'status')]);

function show([{rules}, status]) {
  const body = document.getElementById('rules');
  // What has the focus stays: the table is only made anew when something in it has changed.
  const now = JSON.stringify(rules);
  if (body.dataset.shown !== now) {
    body.replaceChildren(...rules.map(row));
    if (!rules.length)
      body.append(make('tr', {}, make('td', {colspan: 5}, 'None: the service behaves.')));
    body.dataset.shown = now;
  }
  const scan = status.scan === 'done' ? '' : ` Scanning: ${status.read} of ${status.toRead} files read.`;
  say(`${status.tracks} tracks on ${status.albums} albums from ${status.folder}.${scan}`);
}

async function change(method, address, body) {
  const problem = document.getElementById('problem');
  problem.hidden = true;
  try {
    await ask(method, address, body);
  } catch (error) {
    problem.textContent = error.message;
    problem.hidden = false;
  }
  await refresh();
}

function showParameters() {
  const chosen = effects.find((each) => each.name === effect.value);
  document.getElementById('meaning').textContent = chosen.meaning;
  document.getElementById('parameters').replaceChildren(...chosen.parameters.map((parameter) =>
    make('label', {}, parameter.name,
      make('small', {}, parameter.meaning), make('input', {name: parameter.name, spellcheck: 'false'}))));
}

form.addEventListener('submit', (event) => {
  event.preventDefault();
  const rule = {};
  for (const [name, value] of new FormData(form)) {
    if (value !== '')
      rule[name] = value;
  }
  change('POST', 'faults', rule);
});
effect.addEventListener('change', showParameters);
document.getElementById('clear').addEventListener('click', () => change('DELETE', 'faults'));
document.getElementById('quick').append(...quick.map(([label, rule]) =>
  make('button', {type: 'button', onclick: () => change('POST', 'faults', {name: label, ...rule})}, label)));
fillKinds(form.elements.kind);
const refresh = follow(question, show);
({effects} = await ask('GET', 'effects'));
effect.append(...effects.map((each) => make('option', {value: each.name}, each.name)));
effect.value = 'status';
showParameters();
await refresh();
