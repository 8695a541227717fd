// What several tools have in common: their arguments, a look as an answer, an action as an answer.

import * as z from 'zod';

import { consequence } from '../access/confirm.js';
import { act, type Acted, type Deed } from '../desk/act.js';
import type { Look } from '../desk/desk.js';
import { fitted, type Picture, type PictureRequest } from '../picture/picture.js';
import { receiptText } from '../text/receipt.js';
import { plain, quoted } from '../text/safe.js';
import type { Node } from '../window/node.js';
import { defaultBudget, type Answer, type Call, type House } from './tool.js';

export const nodeArgument = z.string().max(40).describe('such as kfm7.12');
export const targetArgument = z
  .string()
  .max(200)
  .optional()
  .describe('letters of a handle (kfm); needed when several are open');
export const pictureArgument = z.boolean().optional().describe('with a picture afterwards');
export const budgetArgument = z.int().min(500).max(45_000).optional();

/** The picture of a look made fit to send; a note instead when that fails. */
export async function pictureOf(look: Look, request: PictureRequest): Promise<Picture | undefined> {
  if (look.picture === undefined) {
    return undefined;
  }
  try {
    return await fitted(look.picture, request);
  } catch (error) {
    const why = error instanceof Error ? plain(error.message, 200) : 'unreadable';
    look.notes.push(`no picture: it could not be prepared (${why})`);
    return undefined;
  }
}

/** Asks the user before what cannot be taken back, where --confirm wants that. */
export function confirmDeed(node: Node, call: Call, house: House): void {
  const does = consequence(node.name) ?? consequence(node.description);
  if (house.options.confirm && does !== undefined) {
    call.confirm(`An agent is about to press ${quoted(node.name, 80)}, which ${does}. Let it?`);
  }
}

export async function acted(acted: Acted): Promise<Answer> {
  const look = acted.after instanceof Error ? undefined : acted.after;
  const picture = look === undefined ? undefined : await pictureOf(look, { size: 'fit' });
  return {
    text: receiptText(acted, defaultBudget, picture?.says),
    picture,
    isError: acted.outcome !== 'done',
  };
}

/** Carries out one deed on the node of a handle and tells what came of it. */
export function actOn(
  handle: string,
  deed: Deed,
  call: Call,
  house: House,
  check?: (node: Node) => void,
): Promise<Answer> {
  const { desk } = house;
  return desk.queue.run(call.signal, async () => {
    const on = desk.handles.actable(handle);
    check?.(on.node);
    return acted(await act(desk, on, deed, call.signal));
  });
}
