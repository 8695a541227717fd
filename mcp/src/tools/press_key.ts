import * as z from 'zod';

import { keyDeed, keyFields, presses } from './deeds.js';
import { actOn, confirmDeed, nodeArgument, pictureArgument } from './shared.js';
import { tool } from './tool.js';

export const pressKey = tool({
  name: 'press_key',
  description: 'Gives a node the focus and presses a key with its modifiers; answers like click.',
  schema: z.strictObject({ node: nodeArgument, ...keyFields, picture: pictureArgument }),
  hints: { destructiveHint: true },
  acts: true,
  run: (args, call, house) =>
    actOn(args.node, { ...keyDeed(args), picture: args.picture === true }, call, house, (node) => {
      if (presses(args)) {
        confirmDeed(node, call, house);
      }
    }),
});
