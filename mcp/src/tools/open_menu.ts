import * as z from 'zod';

import { menuDeed } from './deeds.js';
import { actOn, nodeArgument, pictureArgument } from './shared.js';
import { tool } from './tool.js';

export const openMenu = tool({
  name: 'open_menu',
  description: 'Opens the context menu of a node; answers like click.',
  schema: z.strictObject({ node: nodeArgument, picture: pictureArgument }),
  hints: { destructiveHint: false },
  acts: true,
  run: (args, call, house) =>
    actOn(args.node, { ...menuDeed, picture: args.picture === true }, call, house),
});
