import { h } from '../vendor/preact.js';
import htm from '../vendor/htm.js';

export const html = htm.bind(h);
