// A headless desktop for the agent alone, so that it shares no pointer, focus, clipboard or file
// with the person.
//
// The desktop is script/desktop, and what it runs is a command that waits for the end of its input.
// The other end of that pipe belongs to this process alone, so however this process dies, the
// command sees the end and the desktop is taken down.

import { spawn, type ChildProcess } from 'node:child_process';
import { once } from 'node:events';
import { existsSync, readFileSync } from 'node:fs';
import { basename, dirname, join, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';
import { isRecord } from '../recorder/recording.js';

export interface PrivateDesktop {
  /** The environment of what runs in the desktop: instead of this process's own, never beside it. */
  env: Record<string, string>;
  /** Ends everything in the desktop. Waits until it is gone, 8 s at most. */
  stop: () => Promise<void>;
}

/** The desktop cannot be had. The message is for the user. */
export class NoPrivateDesktop extends Error {}

/** Longer than each part of the desktop is waited for. */
const startMs = 60_000;
const stopMs = 8_000;
const maxLog = 4_000;

/** The system's own: another one in PATH may lack what comes with it. */
const python = '/usr/bin/python3';

/** Prints the environment, an empty entry after it, and waits for the end of the input. */
const insideDesktop = 'env -0 && printf "\\000" && exec cat >/dev/null';

/**
 * Starts a desktop with a screen of `size`, "1280x800" for example; takes a second or two. Linux
 * only. Rejects with NoPrivateDesktop, and then nothing is left running.
 */
export async function startPrivateDesktop(size: string): Promise<PrivateDesktop> {
  if (process.platform !== 'linux') {
    throw new NoPrivateDesktop(
      'A private desktop needs Linux: it is an X server without a screen.',
    );
  }
  if (!/^[1-9]\d{1,4}x[1-9]\d{1,4}$/.test(size)) {
    throw new NoPrivateDesktop(
      `Not a size of a desktop: ${size}. Give WIDTHxHEIGHT, as in 1280x800.`,
    );
  }
  const args = ['--size', size, '--screen-file', '--', '/bin/sh', '-c', insideDesktop];
  // By its interpreter: an archive may have lost that it can be run.
  const child = spawn(python, ['-I', desktopScript(), ...args], {
    stdio: ['pipe', 'pipe', 'pipe'],
    // Out of reach of what ends this process's group, so that it always ends in order.
    detached: true,
  });
  // It may end before it was told to.
  child.stdin.on('error', () => undefined);
  const stop = () => stopDesktop(child);
  try {
    const env = await environmentFrom(child);
    child.unref();
    return { env, stop };
  } catch (error) {
    await stop();
    throw error;
  }
}

/** The script of the source tree that this file is in, or of the installed package. */
export function desktopScript(): string {
  const root = packageRoot();
  const inSources = resolve(root, '../script/desktop');
  // An installed package has another name, and the folder around it is somebody else's.
  if (basename(root) === 'mcp' && existsSync(inSources)) {
    return inSources;
  }
  const packaged = join(root, 'dist/desktop');
  if (existsSync(packaged)) {
    return packaged;
  }
  throw new NoPrivateDesktop(`${packaged} is missing: install tarqo-mcp again.`);
}

function packageRoot(): string {
  let folder = dirname(fileURLToPath(import.meta.url));
  for (;;) {
    try {
      const about: unknown = JSON.parse(readFileSync(join(folder, 'package.json'), 'utf8'));
      if (isRecord(about) && about['name'] === 'tarqo-mcp') {
        return folder;
      }
    } catch {
      // Not here.
    }
    if (folder === dirname(folder)) {
      throw new NoPrivateDesktop('The package of tarqo-mcp is not whole: install it again.');
    }
    folder = dirname(folder);
  }
}

async function environmentFrom(child: ChildProcess): Promise<Record<string, string>> {
  let log = '';
  let printed = '';
  const { stdout, stderr } = child;
  stderr?.setEncoding('utf8').on('data', (text: string) => {
    log = (log + text).slice(-maxLog);
  });
  const end = new AbortController();
  try {
    return await new Promise((give, fail) => {
      const failed = (what: string) => {
        fail(new NoPrivateDesktop(`The private desktop did not start: ${log.trim() || what}`));
      };
      child.once('error', (error) => {
        failed(error.message);
      });
      child.once('close', (code) => {
        failed(`${desktopScript()} ended with status ${String(code)}`);
      });
      const late = setTimeout(failed, startMs, `it took longer than ${startMs / 1000} s`);
      end.signal.addEventListener('abort', () => {
        clearTimeout(late);
      });
      stdout?.setEncoding('utf8').on('data', (text: string) => {
        printed += text;
        if (printed.endsWith('\0\0')) {
          give(Object.fromEntries(printed.slice(0, -2).split('\0').map(variable)));
        }
      });
    });
  } finally {
    end.abort();
    stdout?.removeAllListeners('data').destroy();
    // What the desktop says later (its X server died) is for the person.
    stderr?.removeAllListeners('data').pipe(process.stderr, { end: false });
    [stdout, stderr].forEach((stream) => {
      (stream as unknown as { unref?(): void } | null)?.unref?.();
    });
  }
}

function variable(entry: string): [string, string] {
  const at = entry.indexOf('=');
  return [entry.slice(0, at), entry.slice(at + 1)];
}

async function stopDesktop(child: ChildProcess): Promise<void> {
  if (child.pid === undefined || child.exitCode !== null || child.signalCode !== null) {
    return;
  }
  const gone = once(child, 'exit');
  child.ref();
  child.stdin?.destroy();
  // Still coming up, it does not look at its input yet.
  child.kill('SIGTERM');
  const late = setTimeout(() => child.kill('SIGKILL'), stopMs);
  await gone;
  clearTimeout(late);
}
