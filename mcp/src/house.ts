// Puts together what all calls of a server share.

import { AppRules } from './access/apps.js';
import { RateLimit } from './access/rate.js';
import { Secrets } from './access/secrets.js';
import { Desk } from './desk/desk.js';
import { answerMs } from './desk/link.js';
import { findHelper } from './helper/find.js';
import type { HelperTap } from './helper/tap.js';
import type { Options } from './options.js';
import type { House } from './tools/tool.js';
import { version } from './version.js';

export interface Surroundings {
  environment: NodeJS.ProcessEnv;
  tap?: HelperTap | undefined;
  /** The environment of a desktop that is being started, for the helper instead of the other. */
  desktop?: Promise<NodeJS.ProcessEnv> | undefined;
  /** How long the helper may be silent; 10 s when left out. */
  answerMs?: number;
}

export function houseOf(options: Options, around: Surroundings): House {
  const { environment } = around;
  const secrets = new Secrets(environment, options.secrets);
  const desk = new Desk(
    {
      helper: findHelper(options.helper, environment),
      environment,
      desktop: around.desktop,
      secrets,
      tap: around.tap,
      answerMs: around.answerMs ?? answerMs,
    },
    new AppRules(options.apps, options.deny),
    secrets,
    options.readOnly,
  );
  return { desk, options, rate: new RateLimit(options.rate), version };
}
