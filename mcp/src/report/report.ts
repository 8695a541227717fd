// `tarqo-mcp report`: a recording as one page that can be read anywhere.

import { writeFile } from 'node:fs/promises';
import { basename, join } from 'node:path';
import { parseArgs } from 'node:util';
import sharp from 'sharp';
import { exchangesOf } from '../recorder/exchanges.js';
import {
  entriesOf,
  findRecording,
  NoRecording,
  pictureOf,
  reasonOf,
} from '../recorder/recording.js';
import type { Picture } from './observation.js';
import { pageOf } from './page.js';
import { StepBuilder } from './steps.js';

export const reportUsage = `usage: tarqo-mcp report [--out FILE] FOLDER

Writes the recording in FOLDER, or the newest one below it, as one HTML page that needs nothing else.

  --out FILE   where to; report.html in the recording's folder when missing

Prints the path of the page. Status 0, or 2 when there is nothing to report or it cannot be written.
`;

/** Beyond this a picture is no window of a desktop. */
const maxPixels = 50_000_000;
/** Wide enough for text to be read, and a tenth of the bytes. */
const maxWidth = 1600;

export async function runReport(args: string[]): Promise<number> {
  let folder: string | undefined;
  let out: string | undefined;
  try {
    const { values, positionals } = parseArgs({
      args,
      allowPositionals: true,
      options: { out: { type: 'string' }, help: { type: 'boolean', short: 'h' } },
    });
    if (values.help === true) {
      process.stdout.write(reportUsage);
      return 0;
    }
    folder = positionals[0];
    out = values.out;
    if (folder === undefined || positionals.length > 1) {
      throw new Error(folder === undefined ? 'FOLDER is missing' : 'one FOLDER at a time');
    }
  } catch (error) {
    process.stderr.write(`tarqo-mcp report: ${reasonOf(error)}\n${reportUsage}`);
    return 2;
  }
  try {
    const found = await findRecording(folder);
    const path = out ?? join(found.folder, 'report.html');
    await writeFile(path, await reportOf(found.folder), { mode: 0o600 });
    if (found.count > 1) {
      process.stderr.write(
        `tarqo-mcp report: the newest of ${found.count} recordings; name the folder of another\n`,
      );
    }
    process.stdout.write(path + '\n');
    return 0;
  } catch (error) {
    if (!(error instanceof NoRecording) && !isSystemError(error)) {
      throw error;
    }
    process.stderr.write(`tarqo-mcp report: ${error.message}\n`);
    return 2;
  }
}

/** The page of the recording in `folder`. */
export async function reportOf(folder: string): Promise<string> {
  const builder = new StepBuilder();
  for await (const happening of exchangesOf(entriesOf(folder))) {
    builder.add(happening);
  }
  const pictures = new Map<string, string>();
  for (const { picture } of builder.steps) {
    if (picture !== undefined && !pictures.has(picture.picture.file)) {
      const data = await dataOf(folder, picture.picture);
      if (data !== undefined) {
        pictures.set(picture.picture.file, data);
      }
    }
  }
  const { steps, startedAt, damaged } = builder;
  return pageOf({ name: basename(folder), startedAt, steps, damaged, pictures });
}

/** The picture as a data address; undefined when it is missing or no picture. */
async function dataOf(folder: string, picture: Picture): Promise<string | undefined> {
  const bytes = await pictureOf(folder, picture);
  if (bytes === undefined) {
    return undefined;
  }
  try {
    const small = await sharp(bytes, { limitInputPixels: maxPixels })
      .resize({ width: maxWidth, withoutEnlargement: true })
      .webp({ quality: 80 })
      .toBuffer();
    return `data:image/webp;base64,${small.toString('base64')}`;
  } catch {
    return undefined;
  }
}

function isSystemError(error: unknown): error is NodeJS.ErrnoException {
  return error instanceof Error && 'syscall' in error;
}
