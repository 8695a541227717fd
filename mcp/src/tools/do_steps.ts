import * as z from 'zod';

import { consequence } from '../access/confirm.js';
import { act, type Acted, type Deed } from '../desk/act.js';
import type { Look } from '../desk/desk.js';
import { Refused } from '../desk/queue.js';
import { brief } from '../text/line.js';
import { outcomeText, refusalText, seenText } from '../text/receipt.js';
import { plain, quoted } from '../text/safe.js';
import type { Node } from '../window/node.js';
import { sameWindow, type Observation } from '../window/observation.js';
import {
  clickDeed,
  clickFields,
  hoverDeed,
  keyDeed,
  keyFields,
  menuDeed,
  presses,
  scrollDeed,
  scrollFields,
  textDeed,
  textFields,
} from './deeds.js';
import { matching } from './find.js';
import { nodeArgument, pictureArgument, pictureOf, targetArgument } from './shared.js';
import { defaultBudget, tool, type Answer, type Call, type House } from './tool.js';

const longestMs = 45_000;

const stepSchema = z.strictObject({
  do: z.enum(['click', 'hover', 'open_menu', 'type_text', 'press_key', 'scroll']),
  node: nodeArgument.optional().describe('of the last observation'),
  find: z
    .string()
    .min(1)
    .max(200)
    .optional()
    .describe('instead of node: the one with this name then'),
  role: z.string().max(40).optional().describe('with find or alone; the focused one of several'),
  count: clickFields.count,
  text: z.string().max(2000).optional(),
  secret: z.string().max(100).optional(),
  submit: textFields.submit.describe(''),
  key: keyFields.key.optional().describe(''),
  dx: scrollFields.dx,
  dy: z.int().min(-2000).max(2000).optional(),
  new_window: z.boolean().optional().describe('it is to open or close a window'),
});
type Step = z.infer<typeof stepSchema>;

const schema = z.strictObject({
  steps: z.array(stepSchema).min(1).max(20),
  target: targetArgument,
  picture: pictureArgument,
});

/** Why the steps end here; its text stands below the step. */
class Stop extends Error {
  look: Look | undefined;

  constructor(
    readonly code: string,
    message: string,
    readonly text = `refused, nothing was sent · ${code} · ${message}`,
  ) {
    super(message);
  }

  /** With the look that was taken before it was given up. */
  after(look: Look): this {
    this.look = look;
    return this;
  }
}

function deedOf(step: Step, node: Node, house: House): Deed {
  switch (step.do) {
    case 'click':
      return clickDeed(step);
    case 'hover':
      return hoverDeed;
    case 'open_menu':
      return menuDeed;
    case 'type_text':
      return textDeed(step, node, house);
    case 'press_key':
      return keyDeed({ key: step.key ?? '' });
    case 'scroll':
      return scrollDeed(step);
  }
}

/** The node of a handle, which may be of the look that the steps began with. */
function byHandle(handle: string, start: Observation, now: Observation, house: House): Node {
  const { observation, node } = house.desk.handles.node(handle);
  if (observation !== start) {
    throw new Stop('stale_observation', `${handle} is not of ${start.tag}`);
  }
  const current = now.byNumber.get(node.number);
  if (current === undefined) {
    throw new Stop('stale_target', `${brief(node)} is not there any more`);
  }
  if (current.role !== node.role || current.name !== node.name) {
    throw new Stop('stale_target', `${brief(node)} is ${brief(current)} now`);
  }
  return current;
}

/** The one node of that name: of several the one whose whole name it is, or that can be clicked. */
function byName(step: Step, now: Observation): Node {
  const wanted = step.find ?? '';
  const what = `${step.role ?? 'node'}${wanted === '' ? '' : ` ${quoted(wanted, 60)}`}`;
  let found = matching(now, { text: wanted, role: step.role });
  if (found.length === 0) {
    found = withinNamed(step, now);
  }
  const narrowings: ((node: Node) => boolean)[] = [
    (node) => node.name.toLowerCase() === wanted.trim().toLowerCase(),
    (node) => !node.inMenu,
    (node) => node.enabled && (node.clickable || node.editable),
    (node) => node.focused,
  ];
  for (const test of narrowings) {
    const narrower = found.filter(test);
    found = found.length > 1 && narrower.length > 0 ? narrower : found;
  }
  const [node] = found;
  if (node === undefined) {
    const others = step.role === undefined ? [] : matching(now, { text: wanted });
    const hint = wanted === '' || others.length === 0 ? '' : `, but ${listed(others)}`;
    throw new Stop('not_found', `there is no ${what}${hint}`);
  }
  if (found.length > 1) {
    throw new Stop('ambiguous', `there are ${found.length} of ${what}: ${listed(found)}`);
  }
  return node;
}

/** Nameless ones in what has the name: the text field of a box with choices. */
function withinNamed(step: Step, now: Observation): Node[] {
  const wanted = (step.find ?? '').trim().toLowerCase();
  return wanted === '' || step.role === undefined
    ? []
    : matching(now, { role: step.role }).filter(
        (node) => node.name === '' && node.parent?.name.toLowerCase() === wanted,
      );
}

function listed(nodes: readonly Node[]): string {
  return nodes.slice(0, 6).map(brief).join(', ');
}

function nodeOf(step: Step, start: Observation, now: Observation, house: House): Node {
  if ((step.node === undefined) === (step.find === undefined && step.role === undefined)) {
    throw new Stop('invalid_argument', 'give either node, or find or role');
  }
  return step.node === undefined ? byName(step, now) : byHandle(step.node, start, now, house);
}

function isPress(step: Step): boolean {
  return step.do === 'click' || (step.do === 'press_key' && presses({ key: step.key ?? '' }));
}

/** Asks once for all that the steps press; only what is known by then can be asked about. */
function confirmAll(steps: readonly Step[], start: Observation, call: Call, house: House): void {
  if (!house.options.confirm) {
    return;
  }
  const risky = steps.filter(isPress).flatMap((step) => {
    const name =
      step.node === undefined ? (step.find ?? '') : byHandle(step.node, start, start, house).name;
    const does = consequence(name);
    return does === undefined ? [] : [`${quoted(name, 60)}, which ${does}`];
  });
  if (risky.length > 0) {
    call.confirm(`An agent is about to press ${risky.join('; ')}. Let it?`);
  }
}

/** What `find` led to may be called more than was asked about. */
function requireAsked(step: Step, node: Node, house: House): void {
  const asked = step.node === undefined ? (step.find ?? '') : node.name;
  const does = consequence(node.name);
  if (house.options.confirm && isPress(step) && does !== undefined && !consequence(asked)) {
    throw new Stop('confirmation_needed', `${brief(node)} ${does}: click it by itself`);
  }
}

interface Run {
  lines: string[];
  last: Look | undefined;
  done: number;
}

/** The node of the step, and the look that it is of: what is not there yet is waited for a moment. */
async function foundFor(
  step: Step,
  context: { start: Observation; now: Observation },
  house: House,
): Promise<{ node: Node; now: Observation }> {
  const { start, now } = context;
  try {
    return { node: nodeOf(step, start, now, house), now };
  } catch (error) {
    if (!(error instanceof Stop) || error.code !== 'not_found') {
      throw error;
    }
    const look = await house.desk.laterLook(now.target);
    if (!sameWindow(now, look.observation)) {
      throw new Stop('not_found', `${error.message}, and another window came`).after(look);
    }
    try {
      return { node: nodeOf(step, start, look.observation, house), now: look.observation };
    } catch (again) {
      throw again instanceof Stop ? again.after(look) : again;
    }
  }
}

async function oneStep(
  step: Step,
  context: { start: Observation; now: Observation; last: boolean; picture: boolean },
  call: Call,
  house: House,
): Promise<Acted> {
  const { node, now } = await foundFor(step, context, house);
  requireAsked(step, node, house);
  const deed = { ...deedOf(step, node, house), picture: context.last && context.picture };
  return act(house.desk, { observation: now, node }, deed, call.signal);
}

/** Throws Stop when the next step must not follow. */
function requireExpected(step: Step, acted: Acted, last: boolean): Look {
  if (acted.outcome !== 'done') {
    throw new Stop('', '', outcomeText(acted));
  }
  const { after } = acted;
  if (after instanceof Error) {
    throw new Stop(
      '',
      '',
      `${outcomeText(acted)}\nno look afterwards: ${plain(after.message, 400)}`,
    );
  }
  const same = sameWindow(acted.before, after.observation);
  if (same && step.new_window === true && !last) {
    throw new Stop('', '', `${outcomeText(acted)}\nstopped: no other window came`);
  }
  if (!same && step.new_window !== true && !last) {
    throw new Stop('', '', `${outcomeText(acted)}\nstopped: another window came unexpectedly`);
  }
  return after;
}

async function runSteps(
  steps: readonly Step[],
  start: Observation,
  options: { picture: boolean },
  call: Call,
  house: House,
): Promise<Run> {
  const run: Run = { lines: [], last: undefined, done: 0 };
  const started = house.desk.now();
  let now = start;
  for (const [index, step] of steps.entries()) {
    const last = index === steps.length - 1;
    let acted: Acted | undefined;
    try {
      if (house.desk.now() - started > longestMs) {
        throw new Stop('out_of_time', 'the steps before took too long');
      }
      acted = await oneStep(step, { start, now, last, picture: options.picture }, call, house);
      run.last = acted.after instanceof Error ? run.last : acted.after;
      const look = requireExpected(step, acted, last);
      run.lines.push(`${index + 1} ${outcomeText(acted)}`);
      run.done++;
      now = look.observation;
    } catch (error) {
      if (error instanceof Stop) {
        run.last = error.look ?? run.last;
        run.lines.push(`${index + 1} ${error.text}`);
      } else if (error instanceof Refused) {
        run.lines.push(`${index + 1} ${refusalText(error)}`);
      } else {
        throw error;
      }
      run.done += acted?.outcome === 'done' ? 1 : 0;
      break;
    }
  }
  return run;
}

async function answer(run: Run, count: number, start: Observation): Promise<Answer> {
  const all = run.done === count && run.lines.length === count;
  const head = [
    `${run.done} of ${count} steps done${run.lines.length < count ? `, ${count - run.lines.length} not tried` : ''}`,
    ...run.lines,
  ].join('\n');
  if (run.last === undefined) {
    const still = start.ended === undefined ? `${start.tag} can still be acted on` : 'observe';
    return { text: `${head}\nnext: ${still}`, isError: !all };
  }
  const picture = await pictureOf(run.last, { size: 'fit' });
  const seen = seenText(start, run.last, defaultBudget - head.length - 1, picture?.says);
  return { text: `${head}\n${seen}`, picture, isError: !all };
}

export const doSteps = tool({
  name: 'do_steps',
  description:
    'Several actions in one call, each proven as if alone; stops at the first refusal and at an unexpected window. Nodes are of the last observation, or found by name when their turn comes.',
  schema,
  hints: { destructiveHint: true },
  acts: true,
  run: (args, call, house) => {
    const { desk } = house;
    house.rate.take(args.steps.length - 1);
    return desk.queue.run(call.signal, async () => {
      const handle = args.steps.find((step) => step.node !== undefined)?.node;
      const start =
        handle === undefined
          ? (await desk.look(desk.handles.target(args.target))).observation
          : desk.handles.actable(handle).observation;
      try {
        confirmAll(args.steps, start, call, house);
      } catch (error) {
        if (error instanceof Stop) {
          return { text: `${error.text}\nnext: ${start.tag} can still be acted on`, isError: true };
        }
        throw error;
      }
      const options = { picture: args.picture === true };
      const run = await runSteps(args.steps, start, options, call, house);
      return answer(run, args.steps.length, start);
    });
  },
});
