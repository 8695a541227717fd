import * as z from 'zod';

import { act } from '../desk/act.js';
import { textDeed, textFields } from './deeds.js';
import { acted, nodeArgument, pictureArgument } from './shared.js';
import { tool } from './tool.js';

export const typeText = tool({
  name: 'type_text',
  description:
    'Types into a node: a text field gets the text as its whole value, anything else gets keys (click it first). Answers like click.',
  schema: z.strictObject({ node: nodeArgument, ...textFields, picture: pictureArgument }),
  hints: { destructiveHint: true },
  acts: true,
  run: (args, call, house) => {
    const { desk } = house;
    return desk.queue.run(call.signal, async () => {
      const on = desk.handles.actable(args.node);
      const deed = { ...textDeed(args, on.node, house), picture: args.picture === true };
      return acted(await act(desk, on, deed, call.signal));
    });
  },
});
