// Finds the helper's program, and remembers why it was taken from there.

import { accessSync, constants, statSync } from 'node:fs';
import { delimiter, dirname, isAbsolute, join } from 'node:path';
import { fileURLToPath } from 'node:url';

export interface FoundHelper {
  /** The program and its arguments. */
  command: string[];
  /** "named by --helper", for the user who wonders. */
  why: string;
}

const programName = 'tarqo-ax';

function isProgram(path: string): boolean {
  try {
    accessSync(path, constants.X_OK);
    return statSync(path).isFile();
  } catch {
    return false;
  }
}

function here(): string {
  return dirname(fileURLToPath(import.meta.url));
}

/** Hosts start servers with a short PATH, so the usual folders are looked through as well. */
function candidates(path: string | undefined): { path: string; why: string }[] {
  const beside = [
    join(here(), programName),
    join(here(), '../../build/release', programName),
    join(here(), '../../../build/release', programName),
    join(here(), '../../../../bin', programName),
  ];
  const usual = ['/usr/local/bin', '/usr/bin', '/opt/homebrew/bin'];
  return [
    ...beside.map((path) => ({ path, why: 'lies beside this server' })),
    ...(path ?? '')
      .split(delimiter)
      .filter((folder) => isAbsolute(folder))
      .map((folder) => ({ path: join(folder, programName), why: 'found in PATH' })),
    ...usual.map((folder) => ({ path: join(folder, programName), why: `found in ${folder}` })),
  ];
}

/** The helper's program; a sentence that says where it was looked for when there is none. */
export function findHelper(
  named: string[] | undefined,
  environment: NodeJS.ProcessEnv,
): FoundHelper | string {
  if (named !== undefined) {
    return { command: named, why: 'named by --helper' };
  }
  const variable = environment['TARQO_AX'];
  if (variable !== undefined && variable !== '') {
    return { command: [variable], why: 'named by the variable TARQO_AX' };
  }
  const tried = candidates(environment['PATH']);
  const found = tried.find((candidate) => isProgram(candidate.path));
  if (found !== undefined) {
    return { command: [found.path], why: found.why };
  }
  return (
    `The helper ${programName} was found nowhere: not beside this server, not in PATH, not in ` +
    '/usr/local/bin, /usr/bin or /opt/homebrew/bin. Install it, or name it: --helper /path/to/tarqo-ax'
  );
}
