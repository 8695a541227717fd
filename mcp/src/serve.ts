// Serves the protocol on standard input and output.

import { serveStdio } from '@modelcontextprotocol/server/stdio';

import { houseOf } from './house.js';
import { endWithOthers } from './life.js';
import type { Options } from './options.js';
import { serverOf } from './server.js';
import { plain } from './text/safe.js';

/** Runs until nobody needs it any more; never returns before. */
export function serve(options: Options): void {
  const house = houseOf(options, { environment: process.env });
  const { desk } = house;
  endWithOthers(
    () => desk.link.close(),
    () => {
      desk.link.kill();
    },
  );
  serveStdio(() => serverOf(house), {
    onerror: (error) => {
      process.stderr.write(`tarqo-mcp: ${plain(desk.secrets.redact(error.message), 500)}\n`);
    },
  });
}
