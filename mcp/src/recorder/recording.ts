// The form of a recording on disk, and how it is read back, whole or cut off anywhere.
//
// A recording is a folder: `recording.jsonl`, one entry a line in the order of events, and
// `pictures/`, each picture of the helper once, named by what is in it. An answer names its picture
// in the place of the base64 text. A picture is written before the line that names it, so whatever a
// whole line speaks of is there.

import { createReadStream } from 'node:fs';
import { readdir, readFile, stat } from 'node:fs/promises';
import { join } from 'node:path';
import { createInterface } from 'node:readline';
import { z } from 'zod';

export const recordingFile = 'recording.jsonl';
export const picturesFolder = 'pictures';
export const formatVersion = 1;

/** What stands in the place of a secret. */
export const hidden = '••••';

/** Milliseconds since the recording began, by a clock that never jumps. */
const ms = z.number();

/** A line of the helper's protocol: the object that it holds, or its text where it holds none. */
const line = { body: z.record(z.string(), z.unknown()).optional(), text: z.string().optional() };

const entrySchema = z.discriminatedUnion('kind', [
  z.object({ kind: z.literal('recording'), version: z.number(), at: z.string() }),
  z.object({ kind: z.literal('started'), ms, command: z.array(z.string()), pid: z.number() }),
  z.object({ kind: z.literal('request'), ms, ...line }),
  z.object({ kind: z.literal('answer'), ms, ...line }),
  z.object({
    kind: z.literal('ended'),
    ms,
    code: z.number().nullable(),
    signal: z.string().nullable(),
  }),
]);

export type Entry = z.infer<typeof entrySchema>;
export type Line = Extract<Entry, { kind: 'request' | 'answer' }>;

/** A line that is no entry: the end of a recording that was cut off, or damage. */
export interface Damage {
  kind: 'damage';
  line: number;
}

/** No recording where one was looked for, or one of a later version. The message is for the user. */
export class NoRecording extends Error {}

/** The recording in `folder`, or the newest of those below it, and how many there are. */
export async function findRecording(folder: string): Promise<{ folder: string; count: number }> {
  if (await isFile(join(folder, recordingFile))) {
    return { folder, count: 1 };
  }
  let names: string[];
  try {
    names = await readdir(folder);
  } catch (error) {
    throw new NoRecording(`${folder} cannot be read: ${reasonOf(error)}`);
  }
  const found: string[] = [];
  // Named by their time, so the last name is the newest.
  for (const name of names.sort()) {
    if (await isFile(join(folder, name, recordingFile))) {
      found.push(join(folder, name));
    }
  }
  const newest = found.at(-1);
  if (newest === undefined) {
    throw new NoRecording(
      `${folder} holds no recording. Start the server with --record ${folder} to make one.`,
    );
  }
  return { folder: newest, count: found.length };
}

/** The entries of a recording in their order. Never throws for what a line holds. */
export async function* entriesOf(folder: string): AsyncGenerator<Entry | Damage> {
  const lines = createInterface({
    input: createReadStream(join(folder, recordingFile), 'utf8'),
    crlfDelay: Infinity,
  });
  let number = 0;
  for await (const text of lines) {
    number += 1;
    const entry = entryOf(text);
    if (entry?.kind === 'recording' && entry.version > formatVersion) {
      throw new NoRecording(
        `${folder} was recorded by a newer tarqo-mcp (form ${entry.version}, this one reads ` +
          `${formatVersion}). Read it with that one.`,
      );
    }
    yield entry ?? { kind: 'damage', line: number };
  }
}

/** The bytes of the picture that the image of an answer names; undefined when they are not whole. */
export async function pictureOf(folder: string, image: unknown): Promise<Buffer | undefined> {
  const named = pictureSchema.safeParse(image);
  if (!named.success) {
    return undefined;
  }
  try {
    const bytes = await readFile(join(folder, named.data.file));
    return bytes.length === named.data.bytes ? bytes : undefined;
  } catch {
    return undefined;
  }
}

// A recording may come from somebody else: its names lead nowhere but into its own folder.
const pictureSchema = z.object({
  file: z.string().regex(/^pictures\/[0-9a-f]{32}\.png$/),
  bytes: z.number(),
});

export function isRecord(value: unknown): value is Record<string, unknown> {
  return typeof value === 'object' && value !== null && !Array.isArray(value);
}

export function reasonOf(error: unknown): string {
  return error instanceof Error ? error.message : String(error);
}

function entryOf(text: string): Entry | undefined {
  try {
    return entrySchema.safeParse(JSON.parse(text)).data;
  } catch {
    return undefined;
  }
}

async function isFile(path: string): Promise<boolean> {
  try {
    return (await stat(path)).isFile();
  } catch {
    return false;
  }
}
