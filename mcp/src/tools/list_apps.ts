import * as z from 'zod';

import { plain, quoted } from '../text/safe.js';
import { tool } from './tool.js';

const mostListed = 200;

export const listApps = tool({
  name: 'list_apps',
  description: 'Applications that open_target can open, the running ones first.',
  schema: z.strictObject({
    filter: z.string().max(100).optional().describe('a word of the name or identifier'),
  }),
  hints: { readOnlyHint: true, openWorldHint: false },
  run: (args, call, house) => {
    const { desk } = house;
    return desk.queue.run(call.signal, async () => {
      const all = await desk.installed();
      const word = (args.filter ?? '').trim().toLowerCase();
      const allowed = all.filter((app) => desk.apps.refusal(app) === undefined);
      const found = allowed.filter((app) =>
        `${app.name} ${app.bundleId}`.toLowerCase().includes(word),
      );
      const sorted = [
        ...found.filter((app) => app.running),
        ...found.filter((app) => !app.running),
      ];
      const lines = sorted
        .slice(0, mostListed)
        .map(
          (app) =>
            `${plain(app.bundleId, 120)} ${quoted(app.name, 60)}${app.running ? ' running' : ''}`,
        );
      const denied = all.length - allowed.length;
      const head =
        found.length === 0
          ? `no application ${word === '' ? 'is there' : `matches ${quoted(word, 60)}`}`
          : `${found.length} application${found.length === 1 ? '' : 's'}`;
      const notes = [
        ...(denied > 0 ? [`${denied} more may not be used`] : []),
        ...(sorted.length > mostListed ? [`${sorted.length - mostListed} left out: filter`] : []),
      ];
      return { text: [[head, ...notes].join('; '), ...lines].join('\n') };
    });
  },
});
