import { t } from './text.js';

const two = (n) => String(n).padStart(2, '0');

/** 83000 → "1:23"; hours appear when there are any. Milliseconds; anything else gives "". */
export function clock(ms) {
  if (!Number.isFinite(ms) || ms < 0) return '';
  const seconds = Math.floor(ms / 1000);
  const [h, m, s] = [Math.floor(seconds / 3600), Math.floor(seconds / 60) % 60, seconds % 60];
  return h > 0 ? `${h}:${two(m)}:${two(s)}` : `${m}:${two(s)}`;
}

/** 83000 → "1 min 23 s", as a screen reader should say it. */
export function spokenTime(ms) {
  if (!Number.isFinite(ms) || ms < 0) return '';
  const seconds = Math.floor(ms / 1000);
  const parts = [
    ['time.hours', Math.floor(seconds / 3600)],
    ['time.minutes', Math.floor(seconds / 60) % 60],
    ['time.seconds', seconds % 60],
  ].filter(([, count]) => count > 0);
  if (!parts.length) return t('time.seconds', { count: 0 });
  return parts.map(([id, count]) => t(id, { count })).join(' ');
}

/** A countdown that informs without hurrying: whole minutes until the last one. */
export function remaining(ms) {
  const seconds = Math.max(0, Math.ceil(ms / 1000));
  if (seconds > 60) return t('time.minutes', { count: Math.ceil(seconds / 60) });
  return t('time.seconds', { count: seconds });
}

/** The groups in which a user code is shown: as its writer cut it, else by threes or fours. */
export function codeGroups(code) {
  const text = String(code ?? '').trim();
  if (!text) return [];
  const cut = text.split(/[\s-]+/).filter(Boolean);
  if (cut.length > 1 || text.length <= 5) return cut;
  const size = text.length % 4 === 0 || text.length % 3 !== 0 ? 4 : 3;
  return text.match(new RegExp(`.{1,${size}}`, 'gu'));
}

/** An ISO time as the reader writes times, with the day only when it is not today. */
export function shortTime(iso, now = new Date()) {
  const at = new Date(iso);
  if (Number.isNaN(at.getTime())) return '';
  const sameDay = at.toDateString() === now.toDateString();
  const options = sameDay
    ? { hour: '2-digit', minute: '2-digit' }
    : { dateStyle: 'medium', timeStyle: 'short' };
  return new Intl.DateTimeFormat(undefined, options).format(at);
}
