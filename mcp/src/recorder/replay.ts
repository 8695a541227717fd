// `tarqo-mcp replay`: speaks in place of the helper, out of a recording, so that a session becomes a
// test.

import { once } from 'node:events';
import { createInterface } from 'node:readline';
import type { Readable, Writable } from 'node:stream';
import { isDeepStrictEqual, parseArgs } from 'node:util';
import { exchangesOf, type Exchange } from './exchanges.js';
import {
  entriesOf,
  findRecording,
  hidden,
  isRecord,
  NoRecording,
  pictureOf,
  reasonOf,
} from './recording.js';

export const replayUsage = `usage: tarqo-mcp replay [--run NUMBER] FOLDER

Answers the helper's requests on standard input as the recording in FOLDER has them, in its order.
A request that differs from the next recorded one is refused, and the refusal says what was recorded.

  --run NUMBER   which helper process of the recording to stand in for, when the session had
                 several; the first is 1

Status 0 when every request was as recorded, 1 when one differed, 2 when there is nothing to replay.
A helper that died in the recording dies here, of the same cause.
`;

export interface ReplayStreams {
  input: Readable;
  output: Writable;
  /** Takes what a person should know. */
  say: (text: string) => void;
}

/** How the replay ended: by a status, or of the signal that ended the recorded helper. */
export interface ReplayEnd {
  status: number;
  signal?: string;
}

export async function runReplay(args: string[]): Promise<number> {
  const streams: ReplayStreams = {
    input: process.stdin,
    output: process.stdout,
    say: (text) => process.stderr.write(`tarqo-mcp replay: ${text}\n`),
  };
  let folder: string | undefined;
  let run: number;
  try {
    const { values, positionals } = parseArgs({
      args,
      allowPositionals: true,
      options: { run: { type: 'string', default: '1' }, help: { type: 'boolean', short: 'h' } },
    });
    if (values.help === true) {
      process.stdout.write(replayUsage);
      return 0;
    }
    folder = positionals[0];
    run = Number(values.run);
    if (folder === undefined || positionals.length > 1 || !Number.isInteger(run) || run < 1) {
      throw new Error(
        folder === undefined ? 'FOLDER is missing' : 'one FOLDER, and a run from 1 on',
      );
    }
  } catch (error) {
    streams.say(`${reasonOf(error)}\n${replayUsage}`);
    return 2;
  }
  try {
    const end = await replay(folder, run, streams);
    if (end.signal !== undefined) {
      process.kill(process.pid, end.signal);
      await new Promise(() => undefined);
    }
    return end.status;
  } catch (error) {
    if (!(error instanceof NoRecording)) {
      throw error;
    }
    streams.say(error.message);
    return 2;
  } finally {
    // Or an input that is still open would keep the process.
    process.stdin.destroy();
  }
}

/** Serves the requests of `input` until it ends, `close` is asked, or the recorded helper died. */
export async function replay(
  folder: string,
  run: number,
  { input, output, say }: ReplayStreams,
): Promise<ReplayEnd> {
  const script = await readScript((await findRecording(folder)).folder, run);
  let next = 0;
  let differed = false;
  for await (const line of createInterface({ input, crlfDelay: Infinity })) {
    const request = requestIn(line);
    const recorded = script.exchanges[next];
    const difference = differenceOf(request, recorded);
    if (request?.['method'] === 'close') {
      next += difference === undefined ? 1 : 0;
      break;
    }
    if (recorded === undefined || difference !== undefined) {
      differed = true;
      await send(output, refusal(request, 'differs', difference ?? ''));
      continue;
    }
    next += 1;
    if (recorded.answeredAt !== undefined) {
      await send(output, await answerOf(script.folder, recorded, request));
    } else if (script.end !== undefined) {
      return script.end;
    } else {
      await send(
        output,
        refusal(request, 'incomplete', `The recording ends at request ${recorded.number}.`),
      );
    }
  }
  const left = script.exchanges.slice(next).filter((each) => each.request?.['method'] !== 'close');
  if (left.length > 0) {
    say(`${left.length} recorded ${left.length === 1 ? 'request was' : 'requests were'} not asked`);
  }
  return { status: differed ? 1 : 0 };
}

/** What one helper process was asked, and how it ended where the recording knows. */
interface Script {
  folder: string;
  exchanges: Exchange[];
  end: ReplayEnd | undefined;
}

async function readScript(folder: string, run: number): Promise<Script> {
  const script: Script = { folder, exchanges: [], end: undefined };
  let current = 0;
  for await (const each of exchangesOf(entriesOf(folder))) {
    if (each.kind === 'started') {
      current += 1;
    } else if (each.kind === 'exchange' && each.run === run) {
      script.exchanges.push(each);
    } else if (each.kind === 'ended' && Math.max(current, 1) === run) {
      script.end = { status: each.code ?? 1, ...(each.signal && { signal: each.signal }) };
    }
  }
  if (script.exchanges.length === 0) {
    throw new NoRecording(`${folder} holds no request to a helper process number ${run}.`);
  }
  return script;
}

function requestIn(line: string): Record<string, unknown> | undefined {
  try {
    const request: unknown = JSON.parse(line);
    return isRecord(request) ? request : undefined;
  } catch {
    return undefined;
  }
}

/** Says how a request differs from the recorded one; undefined when it does not. */
function differenceOf(
  request: Record<string, unknown> | undefined,
  recorded: Exchange | undefined,
): string | undefined {
  const asked = `asked was ${describe(request)}`;
  if (recorded === undefined) {
    return `Nothing more was recorded, ${asked}.`;
  }
  const same =
    recorded.request?.['method'] === request?.['method'] &&
    isSame(comparable(recorded.request?.['args']), comparable(request?.['args']));
  return same
    ? undefined
    : `Request ${recorded.number} was recorded as ${describe(recorded.request)}, ${asked}.`;
}

/** The arguments without what differs from run to run although the same is meant. */
function comparable(args: unknown): unknown {
  // The helper takes anything but an object for an empty one.
  return isRecord(args) ? without(args, 'sinceMs') : {};
}

/** Whether two values are the same; a recorded text that was hidden stands for any other. */
function isSame(recorded: unknown, asked: unknown): boolean {
  if (typeof recorded === 'string' && typeof asked === 'string') {
    return recorded === asked || recorded.includes(hidden);
  }
  if (!isRecord(recorded) || !isRecord(asked)) {
    return isDeepStrictEqual(recorded, asked);
  }
  const keys = new Set([...Object.keys(recorded), ...Object.keys(asked)]);
  return [...keys].every((key) => isSame(recorded[key], asked[key]));
}

function describe(request: Record<string, unknown> | undefined): string {
  if (request === undefined) {
    return 'no request';
  }
  const args = JSON.stringify(request['args'] ?? {});
  return `${String(request['method'])} ${args.length > 300 ? args.slice(0, 300) + '…' : args}`;
}

/** `differs`: something else was recorded; `incomplete`: the recording does not hold the answer. */
function refusal(
  request: Record<string, unknown> | undefined,
  what: 'differs' | 'incomplete',
  message: string,
): string {
  return encode({ error: { code: `replay_${what}`, message }, id: request?.['id'] ?? null });
}

/** The recorded answer as the helper wrote it, to the id of the request that was asked now. */
async function answerOf(
  folder: string,
  { answer, nonsense, number }: Exchange,
  request: Record<string, unknown> | undefined,
): Promise<string> {
  if (answer === undefined) {
    return nonsense ?? '';
  }
  const { result } = answer;
  if (isRecord(result) && isRecord(result['image']) && 'file' in result['image']) {
    const picture = await pictureOf(folder, result['image']);
    if (picture === undefined) {
      return refusal(request, 'incomplete', `The picture of answer ${number} is missing.`);
    }
    const image = without(result['image'], 'file', 'bytes');
    answer = {
      ...answer,
      result: { ...result, image: { base64: picture.toString('base64'), ...image } },
    };
  }
  return encode({ ...answer, ...('id' in answer && { id: request?.['id'] ?? null }) });
}

function without(value: Record<string, unknown>, ...names: string[]): Record<string, unknown> {
  return Object.fromEntries(Object.entries(value).filter(([name]) => !names.includes(name)));
}

/** As the helper writes it: a solidus comes escaped. */
function encode(answer: Record<string, unknown>): string {
  return JSON.stringify(answer).replaceAll('/', '\\/');
}

async function send(output: Writable, line: string): Promise<void> {
  if (!output.write(line + '\n')) {
    await once(output, 'drain');
  }
}
