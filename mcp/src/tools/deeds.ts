// What each acting tool asks of the helper: shared by the tools themselves and by do_steps.

import * as z from 'zod';

import type { Deed } from '../desk/act.js';
import { Refused } from '../desk/queue.js';
import { plain, quoted } from '../text/safe.js';
import type { Node } from '../window/node.js';
import type { House } from './tool.js';

export const clickFields = {
  count: z.int().min(1).max(2).optional().describe('2: double click'),
};
export const textFields = {
  text: z.string().max(2000).optional().describe('one line; replaces what a text field holds'),
  secret: z.string().max(100).optional().describe('an environment variable to type instead'),
  submit: z.boolean().optional().describe('press Enter afterwards'),
};
export const keyFields = {
  key: z.string().max(60).describe('Enter, Tab, Control+Shift+s, ArrowDown, F-keys excepted'),
};
export const scrollFields = {
  dx: z.int().min(-2000).max(2000).optional(),
  dy: z.int().min(-2000).max(2000).optional().describe('points; positive is down'),
};

const keyDelayMs = 40;

export function clickDeed(args: { count?: number | undefined }): Deed {
  return {
    method: 'click',
    args: args.count === undefined ? {} : { count: args.count },
    says: args.count === 2 ? 'double-clicked' : 'clicked',
  };
}

export const hoverDeed: Deed = { method: 'hover', args: {}, says: 'rested the pointer on' };
export const menuDeed: Deed = { method: 'showMenu', args: {}, says: 'opened the menu of' };

interface TextArguments {
  text?: string | undefined;
  secret?: string | undefined;
  submit?: boolean | undefined;
}

/** Throws Refused when there is no text to type. `node` tells whether it is a password. */
export function textDeed(args: TextArguments, node: Node, house: House): Deed {
  const { secrets } = house.desk;
  let typed = args.text;
  if (args.secret !== undefined) {
    typed = secrets.find(args.secret);
    if (typed === undefined) {
      const known = secrets.names.length === 0 ? 'none' : secrets.names.join(', ');
      throw new Refused(
        'unknown_secret',
        `${quoted(args.secret, 60)} is no variable that may be typed; there are: ${known}. Nothing was done.`,
        'The user names variables with --secrets, or begins them with TARQO_SECRET_.',
      );
    }
    secrets.hide(typed);
  }
  if (
    typed === undefined ||
    typed === '' ||
    (args.text !== undefined && args.secret !== undefined)
  ) {
    throw new Refused(
      'invalid_argument',
      'Give either text or secret. Nothing was done.',
      'To empty a field press Control+a and Delete in it.',
    );
  }
  if (node.secure) {
    secrets.hide(typed);
  }
  const count = Array.from(typed).length;
  const what = args.secret === undefined ? `${count} characters` : plain(args.secret, 60);
  return {
    method: 'input',
    args: { kind: 'type', text: typed, ...(args.submit === true ? { submit: true } : {}) },
    says: `typed ${what}${args.submit === true ? ' and Enter' : ''} into`,
    extraMs: count * keyDelayMs,
  };
}

const otherNames: Readonly<Record<string, string>> = {
  ctrl: 'Control',
  control: 'Control',
  shift: 'Shift',
  alt: 'Alt',
  option: 'Alt',
  meta: 'Meta',
  cmd: 'Meta',
  command: 'Meta',
  super: 'Meta',
  return: 'Enter',
  enter: 'Enter',
  esc: 'Escape',
  escape: 'Escape',
  del: 'Delete',
  delete: 'Delete',
  backspace: 'Backspace',
  tab: 'Tab',
  space: 'Space',
  up: 'ArrowUp',
  down: 'ArrowDown',
  left: 'ArrowLeft',
  right: 'ArrowRight',
  arrowup: 'ArrowUp',
  arrowdown: 'ArrowDown',
  arrowleft: 'ArrowLeft',
  arrowright: 'ArrowRight',
  pageup: 'PageUp',
  pagedown: 'PageDown',
  pgup: 'PageUp',
  pgdn: 'PageDown',
  home: 'Home',
  end: 'End',
};

export function keyDeed(args: { key: string }): Deed {
  const parts = args.key.split('+').map((part) => part.trim());
  const named = parts.map((part) => otherNames[part.toLowerCase()] ?? part);
  const key = named.pop() ?? '';
  return {
    method: 'input',
    // One letter is the key that it stands on; a capital one is asked for with Shift.
    args: { kind: 'key', key: key.length === 1 ? key.toLowerCase() : key, modifiers: named },
    says: `pressed ${plain([...named, key].join('+'), 60)} on`,
  };
}

/** Whether the key presses the node itself, as a click would. */
export function presses(args: { key: string }): boolean {
  return /^(enter|return|space)$/i.test(args.key.trim());
}

export function scrollDeed(args: { dx?: number | undefined; dy?: number | undefined }): Deed {
  const { dx = 0, dy = 0 } = args;
  if (dx === 0 && dy === 0) {
    throw new Refused(
      'invalid_argument',
      'Give dx or dy, not both 0. Nothing was done.',
      'dy: 300 scrolls down by 300 points.',
    );
  }
  const way = dy === 0 ? `${dx} sideways` : `${dy} down`;
  return {
    method: 'input',
    args: { kind: 'scroll', deltaX: dx, deltaY: dy },
    says: `scrolled ${way} on`,
    extraMs: 5000,
  };
}
