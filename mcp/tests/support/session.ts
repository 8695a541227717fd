// A server in this process, on a simulated desktop, with a client of either era.

import { mkdtempSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';

import { Client } from '@modelcontextprotocol/client';
import { InMemoryTransport } from '@modelcontextprotocol/server';
import { serveStdio } from '@modelcontextprotocol/server/stdio';

import type { HelperTap } from '../../src/helper/tap.js';
import { houseOf } from '../../src/house.js';
import { readOptions } from '../../src/options.js';
import { serverOf } from '../../src/server.js';
import type { House } from '../../src/tools/tool.js';

const root = resolve(fileURLToPath(import.meta.url), '../../../../..');

/** The simulated desktop; TARQO_SIM names another build of it. */
export const simulator = process.env['TARQO_SIM'] ?? join(root, 'build/release/tarqo-ax-sim');
export const exampleScenes = join(root, 'simulator/examples');
export const mainProgram = join(root, 'mcp/dist/main.js');
export const fakeHelper = fileURLToPath(new URL('fake_helper.js', import.meta.url));

export type Era = 'auto' | 'legacy';

export interface Answered {
  text: string;
  isError: boolean;
  images: Buffer[];
  /** The last observation that the text names: "kfm7". */
  tag: string;
}

export interface SessionOptions {
  args?: string[];
  era?: Era;
  environment?: NodeJS.ProcessEnv;
  answerMs?: number;
  tap?: HelperTap;
  /** What the user answers when asked; no client that can ask when left out. */
  user?: (question: string) => boolean;
}

export class Session {
  constructor(
    readonly client: Client,
    readonly house: House,
    private readonly folder: string | undefined,
  ) {}

  async call(
    name: string,
    args: Record<string, unknown> = {},
    options: { signal?: AbortSignal; onprogress?: () => void } = {},
  ): Promise<Answered> {
    return answeredOf(await this.client.callTool({ name, arguments: args }, options));
  }

  /** The handle of the line that holds `text`, in the last look at the only target. */
  async handle(text: string): Promise<string> {
    const { text: said } = await this.call('find', { text });
    const tag = / nodes in (\w+) match/.exec(said)?.[1];
    const number = /found: (\d+)/.exec(said)?.[1];
    if (tag === undefined || number === undefined) {
      throw new Error(`no node says ${text}: ${said}`);
    }
    return `${tag}.${number}`;
  }

  async close(): Promise<void> {
    await this.client.close();
    await this.house.desk.link.close();
    if (this.folder !== undefined) {
      rmSync(this.folder, { recursive: true });
    }
  }
}

interface ToolResult {
  content: { type: string; text?: string; data?: string }[];
  isError?: boolean | undefined;
}

export function answeredOf(result: unknown): Answered {
  const { content, isError } = result as ToolResult;
  const text = content
    .flatMap((part) => (part.type === 'text' ? [part.text ?? ''] : []))
    .join('\n');
  const tags = [...text.matchAll(/^([a-z]{3}\d+) · /gm)].map((found) => found[1] ?? '');
  return {
    text,
    isError: isError === true,
    images: content.flatMap((part) =>
      part.type === 'image' ? [Buffer.from(part.data ?? '', 'base64')] : [],
    ),
    tag: tags.pop() ?? '',
  };
}

export function sceneFile(scene: unknown): { folder: string; file: string } {
  const folder = mkdtempSync(join(tmpdir(), 'tarqo-mcp-'));
  const file = join(folder, 'scene.json');
  writeFileSync(file, JSON.stringify(scene));
  return { folder, file };
}

async function connect(house: House, options: SessionOptions): Promise<Client> {
  const [clientSide, serverSide] = InMemoryTransport.createLinkedPair();
  serveStdio(() => serverOf(house), { transport: serverSide });
  const { user } = options;
  const client = new Client(
    { name: 'test', version: '1' },
    {
      versionNegotiation: { mode: options.era ?? 'auto' },
      ...(user === undefined ? {} : { capabilities: { elicitation: { form: {} } } }),
    },
  );
  if (user !== undefined) {
    client.setRequestHandler('elicitation/create', (request) => ({
      action: 'accept' as const,
      content: { allow: user(request.params.message) },
    }));
  }
  await client.connect(clientSide);
  return client;
}

/** A server over the scene, and a client of it; close it. */
export async function sessionOver(scene: unknown, options: SessionOptions = {}): Promise<Session> {
  const named = typeof scene === 'string' ? undefined : sceneFile(scene);
  const file = named?.file ?? join(exampleScenes, scene as string);
  return sessionOf([simulator, file], options, named?.folder);
}

/** A server over any helper. */
export async function sessionOf(
  command: string[],
  options: SessionOptions = {},
  folder?: string,
): Promise<Session> {
  const [program = '', ...helperArgs] = command;
  const args = [
    '--helper',
    program,
    ...helperArgs.flatMap((arg) => [`--helper-arg=${arg}`]),
    ...(options.args ?? []),
  ];
  const house = houseOf(readOptions(args), {
    environment: options.environment ?? process.env,
    ...(options.answerMs === undefined ? {} : { answerMs: options.answerMs }),
    tap: options.tap,
  });
  return new Session(await connect(house, options), house, folder);
}

/** Runs `body` with a session that is closed whatever comes of it. */
export async function withSession(
  scene: unknown,
  options: SessionOptions,
  body: (session: Session) => Promise<void>,
): Promise<void> {
  const session = await sessionOver(scene, options);
  try {
    await body(session);
  } finally {
    await session.close();
  }
}

/** One application "Notes" with these nodes in its window. */
export function notes(nodes: unknown[], more: Record<string, unknown> = {}): unknown {
  const { application, ...rest } = more as { application?: Record<string, unknown> };
  return {
    applications: [
      {
        bundleId: 'com.example.Notes',
        front: true,
        windows: [{ id: 'main', frame: [100, 80, 800, 600], title: 'Shopping', nodes }],
        ...application,
      },
    ],
    ...rest,
  };
}
