import * as z from 'zod';

import { scrollDeed, scrollFields } from './deeds.js';
import { actOn, nodeArgument, pictureArgument } from './shared.js';
import { tool } from './tool.js';

export const scroll = tool({
  name: 'scroll',
  description: 'Scrolls what a node shows; answers like click.',
  schema: z.strictObject({ node: nodeArgument, ...scrollFields, picture: pictureArgument }),
  hints: { destructiveHint: false },
  acts: true,
  run: (args, call, house) => {
    const deed = { ...scrollDeed(args), picture: args.picture === true };
    return actOn(args.node, deed, call, house);
  },
});
