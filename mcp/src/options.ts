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
}

export const usage = `tarqo-mcp: lets an agent see and use desktop applications (MCP server on standard input and output)

  tarqo-mcp [OPTION…]

  --apps A,B         only these applications, by identifier or name
  --deny A,B         never these; password stores and the host of the server are denied anyway
                     unless --apps names them
  --read-only        no acting tools; nothing is started or brought forward
  --rate N           calls a minute (240)
  --confirm          ask the user before buttons that delete, send or pay
  --secrets A,B      environment variables that type_text may name, besides TARQO_SECRET_…
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

/** Throws UsageError. */
export function readOptions(args: string[]): Options {
  let values;
  try {
    ({ values } = parseArgs({
      args,
      options: {
        apps: { type: 'string' },
        deny: { type: 'string' },
        'read-only': { type: 'boolean', default: false },
        rate: { type: 'string' },
        confirm: { type: 'boolean', default: false },
        secrets: { type: 'string' },
        helper: { type: 'string' },
        'helper-arg': { type: 'string', multiple: true, default: [] },
      },
    }));
  } catch (error) {
    throw new UsageError(error instanceof Error ? error.message : String(error));
  }
  return {
    helper: values.helper === undefined ? undefined : [values.helper, ...values['helper-arg']],
    apps: list(values.apps),
    deny: list(values.deny) ?? [],
    readOnly: values['read-only'],
    rate: rateOf(values.rate),
    confirm: values.confirm,
    secrets: list(values.secrets) ?? [],
  };
}
