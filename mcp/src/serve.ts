// Serves the protocol on standard input and output.

import { serveStdio } from '@modelcontextprotocol/server/stdio';

import { AppRules } from './access/apps.js';
import { RateLimit } from './access/rate.js';
import { Secrets } from './access/secrets.js';
import { Desk } from './desk/desk.js';
import { findHelper } from './helper/find.js';
import { endWithOthers } from './life.js';
import type { Options } from './options.js';
import { serverOf } from './server.js';
import { plain } from './text/safe.js';
import { version } from './version.js';

/** Runs until nobody needs it any more; never returns before. */
export function serve(options: Options): void {
  const secrets = new Secrets(process.env, options.secrets);
  const desk = new Desk(
    {
      helper: findHelper(options.helper, process.env),
      environment: process.env,
      secrets,
    },
    new AppRules(options.apps, options.deny),
    secrets,
    options.readOnly,
  );
  const house = { desk, options, rate: new RateLimit(options.rate), version };
  endWithOthers(
    () => desk.link.close(),
    () => {
      desk.link.kill();
    },
  );
  serveStdio(() => serverOf(house), {
    onerror: (error) => {
      process.stderr.write(`tarqo-mcp: ${plain(secrets.redact(error.message), 500)}\n`);
    },
  });
}
