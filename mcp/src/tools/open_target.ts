import * as z from 'zod';

import { plain, quoted } from '../text/safe.js';
import { windowText } from '../text/receipt.js';
import { pictureOf } from './shared.js';
import { defaultBudget, tool } from './tool.js';

function version(info: Readonly<Record<string, unknown>>): string {
  const text = info['appVersion'];
  return typeof text === 'string' ? ` ${plain(text, 40)}` : '';
}

export const openTarget = tool({
  name: 'open_target',
  description:
    'Opens an application, or brings a running one forward, and looks at its window. Always first; again after app_closed or no_window.',
  schema: z.strictObject({
    app: z.string().min(1).max(300).describe('identifier or name, from list_apps'),
    site: z.string().max(2000).optional().describe('web address: only windows that show its site'),
    picture: z.boolean().optional().describe('false: without'),
  }),
  hints: { destructiveHint: false, idempotentHint: true },
  run: (args, call, house) => {
    const { desk } = house;
    return desk.queue.run(call.signal, async () => {
      const app = await desk.resolve(args.app);
      const { target, info } = await desk.open(app, args.site);
      const wanted = { picture: args.picture !== false };
      const look = await desk.firstLook(target, wanted, app.running);
      const picture = await pictureOf(look, { size: 'fit' });
      const name = quoted(target.name, 60);
      const opened = `open · ${name}${version(info)} (${plain(target.bundleId, 120)}) as ${target.letters}`;
      const rest = defaultBudget - opened.length - 1;
      return {
        text: `${opened}\n${windowText(look, rest, { pictureSays: picture?.says })}`,
        picture,
      };
    });
  },
});
