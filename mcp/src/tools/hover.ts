import * as z from 'zod';

import { hoverDeed } from './deeds.js';
import { actOn, nodeArgument, pictureArgument } from './shared.js';
import { tool } from './tool.js';

export const hover = tool({
  name: 'hover',
  description: 'Rests the pointer on a node and presses nothing; answers like click.',
  schema: z.strictObject({ node: nodeArgument, picture: pictureArgument }),
  hints: { destructiveHint: false, idempotentHint: true },
  acts: true,
  run: (args, call, house) =>
    actOn(args.node, { ...hoverDeed, picture: args.picture === true }, call, house),
});
