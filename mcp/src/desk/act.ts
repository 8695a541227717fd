// One action on one node: handed to the helper, waited for, looked at again.

import { HelperLost, HelperRefusal } from '../helper/failures.js';
import type { HelperResult } from '../helper/client.js';
import type { Node } from '../window/node.js';
import { sameWindow, type Observation } from '../window/observation.js';
import { differences, extent } from '../window/differences.js';
import { isEmpty, type Desk, type Look } from './desk.js';
import { Cancelled } from './queue.js';

export interface Deed {
  /** The helper's method and its arguments but for the node. */
  method: 'click' | 'hover' | 'showMenu' | 'input';
  args: Record<string, unknown>;
  /** "clicked", "typed 3 characters into". */
  says: string;
  /** How much longer than usual it may take. */
  extraMs?: number;
  picture?: boolean;
}

/** done: it was carried out; refused: nothing was sent; unknown: sent, or perhaps, and not confirmed. */
export type Outcome = 'done' | 'refused' | 'unknown';

export interface Acted {
  outcome: Outcome;
  deed: Deed;
  node: Node;
  before: Observation;
  /** What the helper said of a deed that was done. */
  result: HelperResult | undefined;
  /** Why it was refused, or is unknown. */
  problem: HelperRefusal | HelperLost | undefined;
  /** The look afterwards; what stood in its way when there is none. */
  after: Look | Error;
  /** Nothing was heard of the application for a while. */
  quiet: boolean;
}

/** Carries the deed out on a node of the last look. Throws Cancelled when it was called off before. */
export async function act(
  desk: Desk,
  on: { observation: Observation; node: Node },
  deed: Deed,
  signal: AbortSignal,
): Promise<Acted> {
  if (isCancelled(signal)) {
    throw new Cancelled();
  }
  const { observation, node } = on;
  observation.ended = `it was used: ${deed.says} ${node.number}`;
  const acted: Acted = {
    outcome: 'done',
    deed,
    node,
    before: observation,
    result: undefined,
    problem: undefined,
    after: new Error('not looked'),
    quiet: true,
  };
  try {
    const args = { ...deed.args, nodeId: node.helperId };
    acted.result = await desk.link.ask(deed.method, args, deed.extraMs);
  } catch (error) {
    if (!(error instanceof HelperRefusal || error instanceof HelperLost)) {
      throw error;
    }
    acted.problem = error;
    acted.outcome = outcomeOf(error);
  }
  if (isCancelled(signal)) {
    observation.ended = `${deed.says} ${node.number} was cancelled on the way, and may have happened`;
    return acted;
  }
  await lookAfter(desk, acted);
  if (acted.result?.['pending'] === true && changedNothing(acted)) {
    acted.outcome = 'unknown';
  }
  return acted;
}

// Asked anew each time: it changes while others are waited for.
function isCancelled(signal: AbortSignal): boolean {
  return signal.aborted;
}

function outcomeOf(error: HelperRefusal | HelperLost): Outcome {
  if (error instanceof HelperLost) {
    return error.afterSending ? 'unknown' : 'refused';
  }
  // What of a text had gone out stays typed, and a press that had gone before the pointer was refused
  // may have had its effect; an error without a name may have come at any time.
  const { sent, pressed } = error.detail;
  return (typeof sent === 'string' && sent !== '') ||
    pressed === true ||
    error.code === 'native_error'
    ? 'unknown'
    : 'refused';
}

/** Whether a look was taken and shows the window as it was. */
export function changedNothing(acted: Acted): boolean {
  const after = acted.after;
  return (
    !(after instanceof Error) &&
    sameWindow(acted.before, after.observation) &&
    extent(differences(acted.before, after.observation)) === 0
  );
}

async function lookAfter(desk: Desk, acted: Acted): Promise<void> {
  const wanted = {
    picture: acted.deed.picture === true,
    // What was recognised is seen to change only when it is recognised again.
    ...(acted.node.recognized ? { ocr: true } : {}),
  };
  const target = acted.before.target;
  try {
    if (acted.outcome !== 'refused' && desk.link.alive) {
      const settled = await desk.link.ask('settle', {});
      acted.quiet = settled['quiet'] !== false;
    }
    acted.after = await desk.look(target, wanted).catch(async (error: unknown) => {
      // A window that just closed leaves the next one a moment to come forward.
      if (!(error instanceof HelperRefusal) || error.code !== 'no_window') {
        throw error;
      }
      await desk.link.ask('settle', {});
      return desk.look(target, wanted);
    });
    if (isEmpty(acted.after) && !sameWindow(acted.before, acted.after.observation)) {
      acted.after = await desk.laterLook(target, wanted);
    }
  } catch (error) {
    acted.after = error instanceof Error ? error : new Error(String(error));
  }
}
