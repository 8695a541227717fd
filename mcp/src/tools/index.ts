// Every tool, in the order in which they are listed.

import { checkSetup } from './check_setup.js';
import { click } from './click.js';
import { doSteps } from './do_steps.js';
import { find } from './find.js';
import { hover } from './hover.js';
import { listApps } from './list_apps.js';
import { observe } from './observe.js';
import { openMenu } from './open_menu.js';
import { openTarget } from './open_target.js';
import { pressKey } from './press_key.js';
import { scroll } from './scroll.js';
import type { Tool } from './tool.js';
import { typeText } from './type_text.js';
import { waitFor } from './wait_for.js';

export const tools: readonly Tool[] = [
  checkSetup,
  listApps,
  openTarget,
  observe,
  find,
  click,
  hover,
  openMenu,
  typeText,
  pressKey,
  scroll,
  waitFor,
  doSteps,
];
