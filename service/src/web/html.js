// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

/** Markup that is safe to send. Only `html` makes it, so text cannot become markup by accident. */
export class Markup {
  /** @param {string} text */
  constructor(text) {
    this.text = text;
  }
}

const ENTITIES = { '&': '&amp;', '<': '&lt;', '>': '&gt;', '"': '&quot;', "'": '&#39;' };

/** @param {unknown} value @returns {string} */
function render(value) {
  if (value instanceof Markup) return value.text;
  if (Array.isArray(value)) return value.map(render).join('');
  if (value === null || value === undefined || value === false) return '';
  return String(value).replace(/[&<>"']/g, (character) => /** @type {Record<string, string>} */ (ENTITIES)[character]);
}

/**
 * A template whose values are escaped, unless they are markup themselves. Lists are joined; null,
 * undefined and false show nothing.
 *
 * @param {TemplateStringsArray} strings @param {unknown[]} values
 */
export function html(strings, ...values) {
  return new Markup(strings.reduce((text, string, index) => text + render(values[index - 1]) + string));
}
