import * as z from 'zod';

import type { Look } from '../desk/desk.js';
import { Cancelled, Refused } from '../desk/queue.js';
import { seenText, windowText } from '../text/receipt.js';
import { quoted } from '../text/safe.js';
import { everyNode } from '../window/node.js';
import type { Target } from '../window/observation.js';
import { pictureArgument, pictureOf, targetArgument } from './shared.js';
import { defaultBudget, tool, type Answer, type Call, type House } from './tool.js';

const defaultLimitMs = 10_000;
const pauseMs = 100;
const quietMs = 500;
const sliceMs = 1000;

const schema = z.strictObject({
  text: z.string().min(1).max(300).optional().describe('part of a name or value'),
  gone: z.boolean().optional().describe('until the text is gone'),
  target: targetArgument,
  timeout_ms: z.int().min(100).max(45_000).optional().describe('10000'),
  picture: pictureArgument,
});
type Arguments = z.infer<typeof schema>;

function shows(look: Look, text: string): boolean {
  const word = text.toLowerCase();
  const { title, roots } = look.observation;
  return (
    title.toLowerCase().includes(word) ||
    [...everyNode(roots)].some(
      (node) =>
        !node.inMenu &&
        [node.name, node.value, node.description].some((it) => it.toLowerCase().includes(word)),
    )
  );
}

function pause(call: Call): Promise<void> {
  return new Promise((resolve) => {
    const timer = setTimeout(done, pauseMs);
    function done(): void {
      clearTimeout(timer);
      call.signal.removeEventListener('abort', done);
      resolve();
    }
    call.signal.addEventListener('abort', done);
  });
}

interface Waited {
  met: boolean;
  look: Look;
}

/** One turn on the desk: others may have theirs in between. */
async function turn(
  args: Arguments,
  target: Target,
  first: boolean,
  house: House,
): Promise<Waited> {
  const { desk } = house;
  let quiet = false;
  if (!first || args.text === undefined) {
    const settled = await desk.link.ask('settle', {
      quietMs: args.text === undefined ? quietMs : pauseMs,
      timeoutMs: sliceMs,
    });
    quiet = settled['quiet'] === true;
  }
  const look = await desk.look(target);
  const met = args.text === undefined ? quiet : shows(look, args.text) !== (args.gone === true);
  return { met, look };
}

async function wait(args: Arguments, call: Call, house: House): Promise<Answer> {
  const { desk } = house;
  const started = desk.now();
  const limit = args.timeout_ms ?? defaultLimitMs;
  const target = desk.handles.target(args.target);
  const before = desk.observations.lastOf(target);
  let waited: Waited | undefined;
  do {
    if (waited !== undefined) {
      await pause(call);
    }
    if (call.signal.aborted) {
      throw new Cancelled();
    }
    const first = waited === undefined;
    // Not connected yet, there is nothing to settle.
    waited = await desk.queue.run(call.signal, async () => {
      if (!desk.isBoundTo(target)) {
        await desk.look(target);
      }
      return turn(args, target, first, house);
    });
  } while (!waited.met && desk.now() - started < limit);
  return answer(args, waited, { before, seconds: (desk.now() - started) / 1000 });
}

async function answer(
  args: Arguments,
  waited: Waited,
  context: { before: Parameters<typeof seenText>[0] | undefined; seconds: number },
): Promise<Answer> {
  const { look, met } = waited;
  const what = args.text === undefined ? 'the window' : quoted(args.text, 60);
  const [verb, verbNot] =
    args.text === undefined
      ? ['is quiet', 'kept changing']
      : args.gone === true
        ? ['is gone', 'did not go']
        : ['is there', 'did not appear'];
  const outcome = met
    ? `done · ${what} ${verb} after ${context.seconds.toFixed(1)} s`
    : `not met · ${what} ${verbNot} within ${context.seconds.toFixed(1)} s\nnext: wait longer, or look for what stands in its way`;
  const picture = args.picture === true ? await pictureOf(look, { size: 'fit' }) : undefined;
  const rest = defaultBudget - outcome.length - 1;
  const seen =
    context.before === undefined
      ? windowText(look, rest, { pictureSays: picture?.says })
      : seenText(context.before, look, rest, picture?.says);
  return { text: `${outcome}\n${seen}`, picture, isError: !met };
}

export const waitFor = tool({
  name: 'wait_for',
  description:
    'Waits until a text appears or is gone, or (without text) until the window is quiet; then answers like click.',
  schema,
  hints: { readOnlyHint: true },
  run: (args, call, house) => {
    if (args.gone === true && args.text === undefined) {
      throw new Refused('invalid_argument', 'gone needs a text.', 'Name the text that is to go.');
    }
    return wait(args, call, house);
  },
});
