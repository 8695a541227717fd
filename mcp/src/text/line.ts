// The line of a node: its number, what it is, what it says, and how it stands.

import type { Node } from '../window/node.js';
import { quoted } from './safe.js';

export interface LineStyle {
  /** How much of a name or a value is shown. */
  text: number;
}

export const outlineStyle: LineStyle = { text: 120 };
export const wholeStyle: LineStyle = { text: 2100 };

// A role that says that it is pressed; of any other, being clickable is worth a word.
const pressed = new Set(
  (
    'button link checkbox radiobutton popupbutton menuitem menubaritem menubutton tab combobox ' +
    'textbox searchbox cell row text disclosuretriangle switch togglebutton slider'
  ).split(' '),
);
const containers = new Set('group webarea scrollarea window toolbar list table outline'.split(' '));

function mark(node: Node): string {
  if (node.checked !== undefined) {
    return node.checked === 'mixed' ? '[-]' : node.checked ? '[x]' : '[ ]';
  }
  if (node.role === 'checkbox' || node.role === 'radiobutton') {
    // Told as the value by those that know no states.
    return node.value === '1' ? '[x]' : node.value === '0' ? '[ ]' : '';
  }
  return '';
}

/** What it is called. A text field without a name is told under its content, which is its value. */
export function nameOf(node: Node): string {
  return node.editable && node.name === node.value ? '' : node.name;
}

function said(node: Node, style: LineStyle): string[] {
  const parts: string[] = [];
  const name = nameOf(node);
  if (name !== '') {
    parts.push(quoted(name, style.text));
  }
  if (node.secure) {
    parts.push('password');
  } else if (node.value !== '' && node.value !== name && mark(node) === '') {
    parts.push(`= ${quoted(node.value, style.text)}`);
  }
  if (
    node.description !== '' &&
    node.description !== node.name &&
    node.description !== node.value
  ) {
    parts.push(`(${quoted(node.description, Math.min(style.text, 80))})`);
  }
  return parts;
}

/** How it stands: what changes while it stays what it is. */
export function states(node: Node): string[] {
  const list = [
    mark(node),
    node.expanded === undefined ? '' : node.expanded ? 'expanded' : 'collapsed',
    node.selected === true ? 'selected' : '',
    node.focused ? 'focused' : '',
    node.enabled ? '' : 'disabled',
  ];
  return list.filter((state) => state !== '');
}

function role(node: Node): string {
  // A role is the helper's word for what the application says, so nobody knows what is in it.
  return /^[\w -]{1,30}$/.test(node.role) ? node.role : 'element';
}

/** What follows the number. */
export function described(node: Node, style: LineStyle): string {
  const extra: string[] = [];
  if (node.editable && !/^(textbox|searchbox|combobox)$/.test(node.role)) {
    extra.push('editable');
  }
  if (!node.editable && /^(textbox|searchbox)$/.test(node.role) && !node.secure && node.enabled) {
    extra.push('read-only');
  }
  if (node.clickable && !pressed.has(node.role) && !containers.has(node.role)) {
    extra.push('clickable');
  }
  if (node.recognized) {
    extra.push('recognized');
  }
  if (node.url !== undefined) {
    extra.push(quoted(node.url, 100));
  }
  return [role(node), ...said(node, style), ...states(node), ...extra].join(' ');
}

export function lineOf(node: Node, style: LineStyle): string {
  return `${node.number} ${described(node, style)}`;
}

/** Short, for a sentence: `12 button "Save"`. */
export function brief(node: Node): string {
  return `${node.number} ${role(node)}${node.name === '' ? '' : ` ${quoted(node.name, 60)}`}`;
}
