import en from './texts/en.js';

const languages = { en };

/** The tag for <html lang>: the first of the reader's languages that the page speaks. */
export function pickLanguage(wanted) {
  for (const tag of wanted ?? []) {
    const base = String(tag).toLowerCase().split('-')[0];
    if (Object.hasOwn(languages, base)) return base;
  }
  return 'en';
}

export const language = pickLanguage(globalThis.navigator?.languages);

/** The text `id` with each {name} replaced; an unknown id, a fault of ours, shows as itself. */
export function t(id, values) {
  const text = languages[language][id] ?? en[id] ?? id;
  if (!values) return text;
  return text.replace(/\{(\w+)\}/g, (whole, name) => String(values[name] ?? whole));
}
