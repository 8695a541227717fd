// Serves the protocol on standard input and output.

import { serveStdio } from '@modelcontextprotocol/server/stdio';

import type { PrivateDesktop } from './desktop/private_desktop.js';
import { houseOf } from './house.js';
import { endWithOthers } from './life.js';
import type { Options } from './options.js';
import { serverOf } from './server.js';
import { plain } from './text/safe.js';

function say(text: string): void {
  process.stderr.write(`tarqo-mcp: ${text}\n`);
}

async function desktopOf(size: string): Promise<PrivateDesktop> {
  const { startPrivateDesktop } = await import('./desktop/private_desktop.js');
  return startPrivateDesktop(size);
}

async function showOn(desktop: PrivateDesktop): Promise<void> {
  const { startView } = await import('./desktop/view.js');
  say(`the desktop is shown at ${(await startView(desktop)).url}`);
}

/** Serves until nobody needs it any more. The first request is answered before a desktop is up. */
export async function serve(options: Options): Promise<void> {
  const desktop =
    options.privateDesktop === undefined ? undefined : desktopOf(options.privateDesktop);
  if (options.view) {
    desktop?.then(showOn).catch((error: unknown) => {
      say(`the desktop is not shown: ${error instanceof Error ? error.message : String(error)}`);
    });
  }
  const tap =
    options.record === undefined
      ? undefined
      : new (await import('./recorder/recorder.js')).Recorder(options.record);
  const environment = desktop?.then(({ env }) => env);
  // Whoever asks the helper is told; without a request nobody need be.
  environment?.catch(() => undefined);
  const house = houseOf(options, { environment: process.env, tap, desktop: environment });
  const { desk } = house;
  endWithOthers(
    async () => {
      await desk.link.close();
      await (await desktop)?.stop();
    },
    () => {
      desk.link.kill();
    },
  );
  serveStdio(() => serverOf(house), {
    onerror: (error) => {
      say(plain(desk.secrets.redact(error.message), 500));
    },
  });
}
