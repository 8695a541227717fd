import * as z from 'zod';

import type { Look } from '../desk/desk.js';
import { Stale } from '../desk/handles.js';
import type { Mark } from '../picture/marks.js';
import type { PictureRequest } from '../picture/picture.js';
import { wholeStyle } from '../text/line.js';
import { windowText } from '../text/receipt.js';
import { everyNode, type Node } from '../window/node.js';
import { budgetArgument, nodeArgument, pictureOf, targetArgument } from './shared.js';
import { defaultBudget, tool, type Answer, type House } from './tool.js';

const schema = z.strictObject({
  target: targetArgument,
  under: nodeArgument.optional().describe('only what is in this node, with its texts whole'),
  picture: z
    .enum(['window', 'node', 'full', 'none'])
    .optional()
    .describe('node: only that of under; full: not scaled down'),
  marks: z.boolean().optional().describe('draw the numbers into the picture'),
  ocr: z.boolean().optional().describe('also read text from the pixels'),
  max_chars: budgetArgument,
});
type Arguments = z.infer<typeof schema>;

function marksOf(look: Look, under: Node | undefined): Mark[] {
  const roots = under === undefined ? look.observation.roots : [under];
  return [...everyNode(roots)].flatMap((node) =>
    node.bounds !== undefined && !node.inMenu && node.enabled && (node.clickable || node.editable)
      ? [{ number: node.number, bounds: node.bounds }]
      : [],
  );
}

/** The node of a handle in the fresh look: the handle may be of an earlier one. */
function nodeUnder(handle: string, look: Look, house: House): Node {
  const { observation, number } = house.desk.handles.observation(handle);
  const node = number === undefined ? undefined : look.observation.byNumber.get(number);
  if (node === undefined || observation.target !== look.observation.target) {
    throw new Stale(
      'unknown_node',
      `${handle} is not in the window any more.`,
      look.observation.target,
      observation,
      number,
    );
  }
  return node;
}

async function answer(look: Look, args: Arguments, house: House): Promise<Answer> {
  const budget = args.max_chars ?? defaultBudget;
  const under = args.under === undefined ? undefined : nodeUnder(args.under, look, house);
  const request: PictureRequest = {
    size: args.picture === 'full' ? 'full' : 'fit',
    crop: args.picture === 'node' ? under?.bounds : undefined,
    marks: args.marks === true ? marksOf(look, under) : undefined,
  };
  const picture = await pictureOf(look, request);
  return {
    text: windowText(look, budget, {
      pictureSays: picture?.says,
      ...(under === undefined ? {} : { under, style: wholeStyle }),
    }),
    picture,
    budget,
  };
}

export const observe = tool({
  name: 'observe',
  description:
    'Looks at the window of an open application: numbered lines and a picture. Cut parts are marked "+31 under kfm7.40"; ask for them with under, or find.',
  schema,
  hints: { readOnlyHint: true },
  run: (args, call, house) => {
    const { desk } = house;
    return desk.queue.run(call.signal, async () => {
      const handle = args.under;
      const target =
        handle === undefined || args.target !== undefined
          ? desk.handles.target(args.target)
          : desk.handles.observation(handle).observation.target;
      const look = await desk.look(target, {
        picture: args.picture !== 'none',
        ...(args.ocr === undefined ? {} : { ocr: args.ocr }),
      });
      return answer(look, args, house);
    });
  },
});
