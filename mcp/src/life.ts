// Ends the process when nobody needs it any more, and the helper with it.

const parentPollMs = 300;
/** Whatever hangs: after this long the process ends all the same. */
const endMs = 1500;

/**
 * Calls `end` once, and exits when it is done: on the end of standard input, when the parent dies, and
 * on SIGTERM, SIGINT and SIGHUP. `kill` must end at once what `end` did not end in time.
 */
export function endWithOthers(end: () => Promise<void>, kill: () => void): void {
  let ending = false;
  const finish = (status: number) => {
    if (ending) {
      return;
    }
    ending = true;
    setTimeout(() => {
      kill();
      process.exit(status);
    }, endMs);
    const exit = () => process.exit(status);
    end().then(exit, exit);
  };
  for (const signal of ['SIGTERM', 'SIGINT', 'SIGHUP'] as const) {
    process.on(signal, () => {
      finish(0);
    });
  }
  process.stdin.on('end', () => {
    finish(0);
  });
  process.stdin.on('close', () => {
    finish(0);
  });
  process.stdout.on('error', () => {
    finish(0);
  });
  const parent = process.ppid;
  // Launchers keep standard input open when their own parent is gone; then a new parent is all that tells.
  setInterval(() => {
    if (process.ppid !== parent) {
      finish(0);
    }
  }, parentPollMs).unref();
  process.on('uncaughtException', (error) => {
    process.stderr.write(`tarqo-mcp: ${error.stack ?? error.message}\n`);
    finish(1);
  });
}
