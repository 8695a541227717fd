// The command line of the server.

import { parseArgs } from 'node:util';

export interface Options {
  /** The helper's program and its arguments, when named. */
  helper: string[] | undefined;
  apps: string[] | undefined;
  deny: string[];
  readOnly: boolean;
  /** Calls a minute. */
  rate: number;
  confirm: boolean;
  /** Variables that type_text may name, besides TARQO_SECRET_…. */
  secrets: string[];
  /** The folder for recordings, when sessions are recorded. */
  record: string | undefined;
  /** The size of a desktop for the agent alone, when it gets one: "1280x800". */
  privateDesktop: string | undefined;
  /** Whether that desktop's screen can be looked on. */
  view: boolean;
}

export const usage = `tarqo-mcp: lets an agent see and use desktop applications (MCP server on standard input and output)

  tarqo-mcp [OPTION…]
  tarqo-mcp report FOLDER     writes a recording as one HTML page
  tarqo-mcp replay FOLDER     speaks in place of the helper, out of a recording

  --apps A,B         only these applications, by identifier or name
  --deny A,B         never these; password stores and the host of the server are denied anyway
                     unless --apps names them
  --read-only        no acting tools; nothing is started or brought forward
  --rate N           calls a minute (240)
  --confirm          ask the user before buttons that delete, send or pay
  --secrets A,B      environment variables that type_text may name, besides TARQO_SECRET_…
  --record FOLDER    keep what passes between server and helper in a new folder below FOLDER
  --private-desktop [WIDTHxHEIGHT]
                     a headless desktop for the agent alone (1280x800; Linux)
  --view             show that desktop as a live page; its address goes to standard error
  --helper PROGRAM   the helper, instead of the tarqo-ax that is found
  --helper-arg ARG   an argument for it; can be repeated
  --version, --help
`;

export class UsageError extends Error {}

function list(text: string | undefined): string[] | undefined {
  return text
    ?.split(',')
    .map((part) => part.trim())
    .filter((part) => part !== '');
}

function rateOf(text: string | undefined): number {
  const rate = Number(text ?? 240);
  if (!Number.isInteger(rate) || rate < 1 || rate > 100_000) {
    throw new UsageError(`--rate wants a whole number from 1 to 100000, not ${String(text)}`);
  }
  return rate;
}

const desktopOption = '--private-desktop';
const usualSize = '1280x800';

/** The size after --private-desktop may be left out, which parseArgs does not know. */
function withSizes(args: string[]): string[] {
  return args.flatMap((argument, index) => {
    if (argument === desktopOption) {
      return isSize(args[index + 1]) ? [] : [`${desktopOption}=${usualSize}`];
    }
    return args[index - 1] === desktopOption && isSize(argument)
      ? [`${desktopOption}=${argument}`]
      : [argument];
  });
}

function isSize(argument: string | undefined): boolean {
  return argument !== undefined && /^\d+x\d+$/.test(argument);
}

/** Throws UsageError. */
export function readOptions(args: string[]): Options {
  let values;
  try {
    ({ values } = parseArgs({
      args: withSizes(args),
      options: {
        apps: { type: 'string' },
        deny: { type: 'string' },
        'read-only': { type: 'boolean', default: false },
        rate: { type: 'string' },
        confirm: { type: 'boolean', default: false },
        secrets: { type: 'string' },
        record: { type: 'string' },
        'private-desktop': { type: 'string' },
        view: { type: 'boolean', default: false },
        helper: { type: 'string' },
        'helper-arg': { type: 'string', multiple: true, default: [] },
      },
    }));
  } catch (error) {
    throw new UsageError(error instanceof Error ? error.message : String(error));
  }
  if (values.view && values['private-desktop'] === undefined) {
    throw new UsageError('--view shows a private desktop: give --private-desktop too');
  }
  return {
    helper: values.helper === undefined ? undefined : [values.helper, ...values['helper-arg']],
    apps: list(values.apps),
    deny: list(values.deny) ?? [],
    readOnly: values['read-only'],
    rate: rateOf(values.rate),
    confirm: values.confirm,
    secrets: list(values.secrets) ?? [],
    record: values.record,
    privateDesktop: values['private-desktop'],
    view: values.view,
  };
}
