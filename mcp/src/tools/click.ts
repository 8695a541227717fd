import * as z from 'zod';

import { clickDeed, clickFields } from './deeds.js';
import { actOn, confirmDeed, nodeArgument, pictureArgument } from './shared.js';
import { tool } from './tool.js';

export const click = tool({
  name: 'click',
  description:
    'Clicks a node of the last observation; answers with a receipt (done, refused, unknown), the next observation and what changed.',
  schema: z.strictObject({ node: nodeArgument, ...clickFields, picture: pictureArgument }),
  hints: { destructiveHint: true },
  acts: true,
  run: (args, call, house) =>
    actOn(
      args.node,
      { ...clickDeed(args), picture: args.picture === true },
      call,
      house,
      (node) => {
        confirmDeed(node, call, house);
      },
    ),
});
