// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

import { invalid, textField } from './fields.js';

const MAX_BATCH = 200;
const MAX_PROPS = 50;
const EVENT_NAME = /^cap\.[a-z0-9_]+$/;

/**
 * Reads a batch of usage events. One bad event refuses the batch: the sender would only repeat it.
 *
 * @param {Record<string, unknown>} body
 * @returns {import('../store/events.js').UsageEvent[]}
 */
export function parseEvents(body) {
  const { events } = body;
  if (!Array.isArray(events)) throw invalid('events', 'must be an array');
  if (events.length > MAX_BATCH) throw invalid('events', `must not hold more than ${MAX_BATCH} events`);
  return events.map(parseEvent);
}

/** @param {unknown} value */
function parseEvent(value) {
  if (value === null || typeof value !== 'object') throw invalid('events', 'must hold objects');
  const event = /** @type {Record<string, unknown>} */ (value);
  const id = textField(event, 'id', { max: 100 });
  const name = textField(event, 'name', { max: 100 });
  if (!EVENT_NAME.test(name)) throw invalid('name', 'must be "cap." and lower-case letters, digits and underscores');
  const props = /** @type {Record<string, string|number|boolean>} */ (event.props);
  if (props === null || typeof props !== 'object' || Array.isArray(props)) throw invalid('props', 'must be an object');
  const values = Object.values(props);
  if (values.length > MAX_PROPS || values.some((prop) => !['string', 'number', 'boolean'].includes(typeof prop))) {
    throw invalid('props', 'must hold a few strings, numbers or booleans');
  }
  return { id, name, props };
}
