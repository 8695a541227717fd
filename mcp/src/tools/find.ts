import * as z from 'zod';

import { Refused } from '../desk/queue.js';
import { lifetimeMs } from '../desk/handles.js';
import { outline } from '../text/outline.js';
import { quoted } from '../text/safe.js';
import { everyNode, type Node } from '../window/node.js';
import type { Observation } from '../window/observation.js';
import { budgetArgument, targetArgument } from './shared.js';
import { defaultBudget, tool } from './tool.js';

const mostFound = 200;

/** The nodes whose name, value or description holds the text, and whose role is that role. */
export function matching(
  observation: Observation,
  wanted: { text?: string | undefined; role?: string | undefined },
): Node[] {
  const text = (wanted.text ?? '').trim().toLowerCase();
  const role = (wanted.role ?? '').trim().toLowerCase();
  return [...everyNode(observation.roots)].filter(
    (node) =>
      (role === '' || node.role === role) &&
      (text === '' ||
        [node.name, node.value, node.description].some((it) => it.toLowerCase().includes(text))),
  );
}

/** With what each stands beside: the reader wants to know which of them it is. */
function withSurroundings(found: readonly Node[], observation: Observation): Set<Node> {
  const wanted = new Set(found);
  for (const node of found.slice(0, mostFound)) {
    const siblings = node.parent?.children ?? observation.roots;
    const at = siblings.indexOf(node);
    for (const near of siblings.slice(Math.max(0, at - 1), at + 2)) {
      wanted.add(near);
    }
  }
  return wanted;
}

function search(
  observation: Observation,
  args: { text?: string | undefined; role?: string | undefined },
  budget: number,
  now: number,
): string {
  const found = matching(observation, args);
  const what = [args.role ?? '', args.text === undefined ? '' : quoted(args.text, 60)];
  const stale =
    observation.ended !== undefined || now - observation.at > lifetimeMs
      ? ' · it cannot be acted on any more: observe'
      : '';
  const head = `${found.length} of ${observation.byNumber.size} nodes in ${observation.tag} match ${what.join(' ').trim()}${stale}`;
  if (found.length === 0) {
    const roles = new Set([...everyNode(observation.roots)].map((node) => node.role));
    return `${head}\nroles there are: ${[...roles].slice(0, 40).join(', ')}`.slice(0, budget);
  }
  const numbers = found.map((node) => node.number);
  const shown = `found: ${numbers.slice(0, 40).join(' ')}${numbers.length > 40 ? ' …' : ''}`;
  const { text } = outline({
    roots: observation.roots,
    tag: observation.tag,
    budget: budget - head.length - shown.length - 2,
    view: observation.bounds,
    wanted: withSurroundings(found.slice(0, mostFound), observation),
    only: true,
  });
  return `${head}\n${shown}\n${text}`;
}

export const find = tool({
  name: 'find',
  description:
    'Searches the last observation, what was cut from it and closed menus included; gives the lines with what is around them. Does not look again.',
  schema: z.strictObject({
    text: z.string().max(300).optional().describe('part of a name or value'),
    role: z.string().max(40).optional().describe('button, textbox, menuitem …'),
    target: targetArgument,
    max_chars: budgetArgument,
  }),
  hints: { readOnlyHint: true, openWorldHint: false },
  run: (args, call, house) => {
    const { desk } = house;
    return desk.queue.run(call.signal, () => {
      if ((args.text ?? '').trim() === '' && (args.role ?? '').trim() === '') {
        throw new Refused('invalid_argument', 'Give text or role.', 'find {"text": "Save"}');
      }
      const target = desk.handles.target(args.target);
      const observation = desk.observations.lastOf(target);
      if (observation === undefined) {
        throw new Refused('no_observation', 'It was not looked at yet.', 'Call observe.');
      }
      const budget = args.max_chars ?? defaultBudget;
      return Promise.resolve({ text: search(observation, args, budget, desk.now()), budget });
    });
  },
});
