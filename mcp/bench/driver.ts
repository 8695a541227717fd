// Calls the tools of a server as an agent does, and counts what that takes.

import { Client } from '@modelcontextprotocol/client';
import { StdioClientTransport } from '@modelcontextprotocol/client/stdio';

export interface Said {
  text: string;
  isError: boolean;
  ms: number;
}

export class Driver {
  calls = 0;
  characters = 0;
  /** Of the calls, those that only went on where a refusal had stopped the one before. */
  repeated = 0;

  private constructor(
    private readonly client: Client,
    readonly connectMs: number,
  ) {}

  static async start(
    program: string,
    args: string[],
    environment: NodeJS.ProcessEnv = process.env,
  ): Promise<Driver> {
    const client = new Client(
      { name: 'bench', version: '1' },
      { versionNegotiation: { mode: 'auto' } },
    );
    const env = environment as Record<string, string>;
    const command = { command: process.execPath, args: [program, ...args], env };
    const begin = performance.now();
    await client.connect(new StdioClientTransport(command));
    return new Driver(client, performance.now() - begin);
  }

  async listed(): Promise<{ tools: number; bytes: number }> {
    const { tools } = await this.client.listTools();
    return { tools: tools.length, bytes: Buffer.byteLength(JSON.stringify(tools)) };
  }

  async call(name: string, args: Record<string, unknown>): Promise<Said> {
    const begin = performance.now();
    const result = await this.client.callTool({ name, arguments: args });
    const ms = performance.now() - begin;
    const text = result.content
      .flatMap((part) => (part.type === 'text' ? [part.text] : []))
      .join('\n');
    this.calls++;
    this.characters += text.length;
    return { text, isError: result.isError === true, ms };
  }

  /** Several steps; where one was refused and nothing sent, they go on from there as the answer says. */
  async steps(steps: readonly Record<string, unknown>[], target?: string): Promise<Said> {
    let left = [...steps];
    for (let tries = 0; ; tries++) {
      const said = await this.call('do_steps', { steps: left, target });
      const done = Number(/^(\d+) of /.exec(said.text)?.[1] ?? 0);
      if (!said.text.includes('refused, nothing was sent') || tries === 3) {
        return said;
      }
      this.repeated++;
      const tag = tagOf(said.text) ?? '';
      left = left.slice(done).map((step) => {
        const number = typeof step['node'] === 'string' ? step['node'].split('.')[1] : undefined;
        return number === undefined ? step : { ...step, node: `${tag}.${number}` };
      });
    }
  }

  /** What was counted since the last time. */
  taken(): { calls: number; characters: number; repeated: number } {
    const { calls, characters, repeated } = this;
    this.calls = 0;
    this.characters = 0;
    this.repeated = 0;
    return { calls, characters, repeated };
  }

  close(): Promise<void> {
    return this.client.close();
  }
}

/** The last observation that the text names: "kfm7". */
function tagOf(text: string): string | undefined {
  return [...text.matchAll(/^([a-z]{3}\d+) · /gm)].pop()?.[1];
}

/** A line of a node, in a window or in what changed; its number. */
const isNode = /^ *(?:[~+] )?(\d+) /;

/** The handle of the first line of a node that matches: "kfm7.12". */
export function handleOf(text: string, line: RegExp): string {
  const tag = tagOf(text);
  const found = text.split('\n').find((one) => isNode.test(one) && line.test(one));
  const number = isNode.exec(found ?? '')?.[1];
  if (tag === undefined || number === undefined) {
    throw new Error(`no line ${line.source} in:\n${text}`);
  }
  return `${tag}.${number}`;
}
