// The flight recorder: writes down what passes between the server and the helper, as it happens.
//
// Each line is with the system before the server goes on, so a request is kept before the helper can
// act on it, and what a server that was killed had seen is all there.

import { createHash } from 'node:crypto';
import { closeSync, mkdirSync, mkdtempSync, openSync, writeFileSync, writeSync } from 'node:fs';
import { join } from 'node:path';
import { performance } from 'node:perf_hooks';
import type { HelperTap } from '../helper/tap.js';
import {
  formatVersion,
  isRecord,
  picturesFolder,
  reasonOf,
  recordingFile,
  type Entry,
  type Line,
} from './recording.js';
import { SecretFields } from './secret_fields.js';

/** What is kept of a line that is no JSON object. */
const maxTextLength = 100_000;

const fileMode = 0o600;
const folderMode = 0o700;

/**
 * Records into a new folder of its own below the folder it is given, so that servers which share
 * their settings never share a recording. Nobody but the user may read it. Whatever goes wrong ends
 * the recording with one warning, and never the server.
 */
export class Recorder implements HelperTap {
  /** Where the recording is; undefined when there is none. */
  readonly folder: string | undefined;

  private readonly began = performance.now();
  private readonly pictures = new Set<string>();
  private readonly secretFields = new SecretFields();
  private file: number | undefined;

  constructor(
    parent: string,
    private readonly warn: (text: string) => void = warnOnStandardError,
  ) {
    const now = new Date().toISOString();
    try {
      mkdirSync(parent, { recursive: true, mode: folderMode });
      // "20261122-051012-" and six characters that nobody else has.
      this.folder = mkdtempSync(
        join(parent, now.replace(/\..*/, '-').replace(/[-:]/g, '').replace('T', '-') + '-'),
      );
      mkdirSync(join(this.folder, picturesFolder), { mode: folderMode });
      this.file = openSync(join(this.folder, recordingFile), 'ax', fileMode);
    } catch (error) {
      this.warn(`nothing is recorded: ${reasonOf(error)}`);
      return;
    }
    this.write({ kind: 'recording', version: formatVersion, at: now });
  }

  started(info: { command: string[]; pid: number }): void {
    this.secretFields.forget();
    this.write({ kind: 'started', ms: this.now(), command: info.command, pid: info.pid });
  }

  request(line: string): void {
    this.keep('request', line, (body) => {
      this.secretFields.hideInRequest(body);
    });
  }

  response(line: string): void {
    this.keep('answer', line, (body) => {
      this.secretFields.hideInAnswer(body);
      this.movePicture(body);
    });
  }

  ended(info: { code: number | null; signal: string | null }): void {
    this.write({ kind: 'ended', ms: this.now(), code: info.code, signal: info.signal });
  }

  /** Ends the recording. What comes later is not kept. */
  close(): void {
    const file = this.file;
    this.file = undefined;
    if (file !== undefined) {
      try {
        closeSync(file);
      } catch {
        // Every line is with the system already.
      }
    }
  }

  private keep(
    kind: Line['kind'],
    line: string,
    prepare: (body: Record<string, unknown>) => void,
  ): void {
    if (this.file === undefined) {
      return;
    }
    const body = objectIn(line);
    if (body === undefined) {
      this.write({ kind, ms: this.now(), text: line.slice(0, maxTextLength) });
      return;
    }
    try {
      prepare(body);
    } catch (error) {
      this.giveUp(error);
      return;
    }
    this.write({ kind, ms: this.now(), body });
  }

  /** Puts the picture of an answer into a file, once, and its name in the place of its base64. */
  private movePicture(body: Record<string, unknown>): void {
    const image = isRecord(body['result']) ? body['result']['image'] : undefined;
    if (this.folder === undefined || !isRecord(image) || typeof image['base64'] !== 'string') {
      return;
    }
    const bytes = Buffer.from(image['base64'], 'base64');
    const name = createHash('sha256').update(bytes).digest('hex').slice(0, 32);
    const file = `${picturesFolder}/${name}.png`;
    if (!this.pictures.has(name)) {
      writeFileSync(join(this.folder, file), bytes, { flag: 'wx', mode: fileMode });
      this.pictures.add(name);
    }
    delete image['base64'];
    Object.assign(image, { file, bytes: bytes.length });
  }

  private write(entry: Entry): void {
    if (this.file === undefined) {
      return;
    }
    try {
      const bytes = Buffer.from(JSON.stringify(entry) + '\n');
      // A disk that is nearly full takes a part and fails at the rest.
      for (let done = 0; done < bytes.length;) {
        done += writeSync(this.file, bytes, done);
      }
    } catch (error) {
      this.giveUp(error);
    }
  }

  private giveUp(error: unknown): void {
    this.close();
    this.warn(
      `the recording in ${this.folder ?? ''} ends here, the session goes on: ${reasonOf(error)}`,
    );
  }

  private now(): number {
    return Math.round((performance.now() - this.began) * 10) / 10;
  }
}

function objectIn(line: string): Record<string, unknown> | undefined {
  try {
    const value: unknown = JSON.parse(line);
    return isRecord(value) ? value : undefined;
  } catch {
    return undefined;
  }
}

function warnOnStandardError(text: string): void {
  try {
    // Not process.stderr: a pipe whose reader has gone would raise its error later, as an event.
    writeSync(2, `tarqo-mcp: ${text}\n`);
  } catch {
    // Nobody listens.
  }
}
