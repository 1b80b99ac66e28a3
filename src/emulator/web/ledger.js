import {ask, fillKinds, follow, make, say} from './page.js';

const shownAtMost = 500;
const told = ['serial', 'at', 'kind', 'method', 'path', 'query', 'host', 'secure', 'status', 'fault', 'effect'];
const entries = document.getElementById('entries');
const kind = document.getElementById('kind');
const pause = document.getElementById('pause');
let since = 0;

function summary(entry) {
  if (entry.report)
    return `${entry.report.event} ${entry.report.reason} at ${entry.report.trackPosition} ms: ${entry.track}`;
  if (entry.rating)
    return `${entry.rating.thumbRating}: ${entry.track}`;
  return [entry.track, entry.range, entry.grantType, entry.token && `token ${entry.token}`].filter(Boolean).join(', ');
}

function details(entry) {
  const rest = Object.fromEntries(Object.entries(entry).filter(([key]) => !told.includes(key)));
  if (!Object.keys(rest).length)
    return '';
  return make('details', {}, make('summary', {}, summary(entry) || 'more'),
    make('pre', {}, JSON.stringify(rest, null, 2)));
}

function row(entry) {
  const query = entry.query ? `?${entry.query}` : '';
  const answer = entry.status || 'none';
  return make('tr', {class: entry.fault ? 'struck' : ''}, make('td', {}, `${entry.serial}`),
    make('td', {}, entry.at.slice(11, 23)), make('td', {}, entry.kind),
    make('td', {}, `${entry.method} `, make('code', {}, `${entry.path}${query}`),
      ` ${entry.host ?? ''}${entry.secure ? ' (TLS)' : ''}`),
    make('td', {class: entry.status >= 400 || !entry.status ? 'bad' : ''},
      entry.fault ? `${answer}, fault “${entry.fault}” (${entry.effect})` : `${answer}`),
    make('td', {}, details(entry)));
}

function question() {
  if (pause.getAttribute('aria-pressed') === 'true')
    return null;
  const filter = kind.value ? `&kind=${kind.value}` : '';
  return ask('GET', `ledger?since=${since}&limit=${shownAtMost}${filter}`);
}

function show(answer) {
  since = answer.serial;
  entries.prepend(...answer.entries.reverse().map(row));
  while (entries.children.length > shownAtMost)
    entries.lastElementChild.remove();
  say(`${answer.serial} requests so far. The newest stand first.`);
}

function startAgain() {
  since = 0;
  entries.replaceChildren();
  return refresh();
}

fillKinds(kind);
const refresh = follow(question, show);
kind.addEventListener('change', startAgain);
pause.addEventListener('click', () => {
  pause.setAttribute('aria-pressed', pause.getAttribute('aria-pressed') !== 'true');
});
document.getElementById('clear').addEventListener('click', async () => {
  await ask('POST', 'ledger/clear');
  await startAgain();
});
await refresh();
