// One helper process and the lines that are exchanged with it.

import { spawn, type ChildProcessWithoutNullStreams } from 'node:child_process';

import { HelperLost, HelperRefusal } from './failures.js';
import type { HelperTap } from './tap.js';

export type HelperResult = Readonly<Record<string, unknown>>;

/** More than any answer: 64 MB hold the picture of a screen ten times over. */
const longestLine = 64 * 1024 * 1024;
const keptOfErrors = 2000;
const graceMs = 700;

export interface HelperClientOptions {
  command: string[];
  environment: NodeJS.ProcessEnv;
  tap?: HelperTap | undefined;
  /** What a line looks like to the tap: with secrets taken out. */
  redact?: (line: string) => string;
  /** Called once, when the process is gone or given up. */
  onLost?: (why: string) => void;
}

interface Waiting {
  id: number;
  resolve(result: HelperResult): void;
  reject(error: Error): void;
  timer: NodeJS.Timeout;
}

function isObject(value: unknown): value is Record<string, unknown> {
  return typeof value === 'object' && value !== null && !Array.isArray(value);
}

/**
 * Starts a helper and asks it one thing at a time: the caller waits for an answer before it asks
 * again. A helper that ends, does not answer in time or talks nonsense is ended for good.
 */
export class HelperClient {
  private readonly process: ChildProcessWithoutNullStreams;
  private waiting: Waiting | undefined;
  private pieces: Buffer[] = [];
  private pending = 0;
  private errors = '';
  private nextId = 1;
  private lost: string | undefined;

  constructor(private readonly options: HelperClientOptions) {
    const [program = '', ...args] = options.command;
    this.process = spawn(program, args, {
      env: options.environment,
      stdio: ['pipe', 'pipe', 'pipe'],
    });
    this.process.stdout.on('data', (chunk: Buffer) => {
      this.read(chunk);
    });
    this.process.stderr.on('data', (chunk: Buffer) => {
      this.errors = (this.errors + chunk.toString('utf8')).slice(-keptOfErrors);
    });
    // Writing to one that has gone is no news: its end is told by "exit".
    this.process.stdin.on('error', () => undefined);
    this.process.on('error', (error) => {
      this.lose(`The helper could not be started (${program}): ${error.message}.`);
    });
    this.process.on('exit', (code, signal) => {
      options.tap?.ended({ code, signal });
      this.lose(`The helper ended (${signal ?? `status ${String(code)}`}).`);
    });
    if (this.process.pid !== undefined) {
      options.tap?.started({ command: options.command, pid: this.process.pid });
    }
  }

  get pid(): number | undefined {
    return this.process.pid;
  }

  get alive(): boolean {
    return this.lost === undefined;
  }

  /** The result; throws HelperRefusal or, when the helper is no more, HelperLost. */
  request(method: string, args: Record<string, unknown>, timeoutMs: number): Promise<HelperResult> {
    if (this.lost !== undefined) {
      return Promise.reject(new HelperLost(this.lost, false));
    }
    if (this.waiting !== undefined) {
      return Promise.reject(new Error('The helper was asked twice at once.'));
    }
    const id = this.nextId++;
    const line = JSON.stringify({ id, method, args });
    return new Promise((resolve, reject) => {
      const timer = setTimeout(() => {
        this.lose(`The helper did not answer "${method}" within ${timeoutMs / 1000} s.`);
      }, timeoutMs);
      this.waiting = { id, resolve, reject, timer };
      this.options.tap?.request(this.shown(line));
      this.process.stdin.write(line + '\n');
    });
  }

  /** Lets the helper end by itself, and ends it when it does not. Resolves when it is gone. */
  async close(): Promise<void> {
    if (this.process.exitCode !== null || this.process.signalCode !== null) {
      return;
    }
    const gone = new Promise<void>((resolve) => {
      this.process.once('exit', () => {
        resolve();
      });
      this.process.once('error', () => {
        resolve();
      });
    });
    this.process.stdin.end();
    const timer = setTimeout(() => this.process.kill('SIGKILL'), graceMs);
    await gone;
    clearTimeout(timer);
  }

  /** Ends it at once, without waiting. */
  kill(): void {
    this.process.kill('SIGKILL');
  }

  private shown(line: string): string {
    return this.options.redact?.(line) ?? line;
  }

  private read(chunk: Buffer): void {
    let start = 0;
    for (let end = chunk.indexOf(10); end !== -1; end = chunk.indexOf(10, start)) {
      this.pieces.push(chunk.subarray(start, end));
      const line = Buffer.concat(this.pieces).toString('utf8');
      this.pieces = [];
      this.pending = 0;
      start = end + 1;
      this.answer(line);
    }
    this.pieces.push(chunk.subarray(start));
    this.pending += chunk.length - start;
    if (this.pending > longestLine) {
      this.pieces = [];
      this.lose('The helper wrote a line without end.');
    }
  }

  private answer(line: string): void {
    if (this.lost !== undefined) {
      return;
    }
    this.options.tap?.response(this.shown(line));
    const waiting = this.waiting;
    let response: unknown;
    try {
      response = JSON.parse(line);
    } catch {
      response = undefined;
    }
    if (!isObject(response) || waiting === undefined || response['id'] !== waiting.id) {
      this.lose('The helper answered something that is no answer.');
      return;
    }
    const { result, error } = response;
    if (isObject(result)) {
      this.settle();
      waiting.resolve(result);
    } else if (isObject(error) && typeof error['code'] === 'string') {
      const { message, ...rest } = error;
      this.settle();
      waiting.reject(
        new HelperRefusal(
          error['code'],
          typeof message === 'string' ? message : 'No reason was given.',
          rest,
        ),
      );
    } else {
      this.lose('The helper answered something that is no answer.');
    }
  }

  private settle(): void {
    clearTimeout(this.waiting?.timer);
    this.waiting = undefined;
  }

  private lose(why: string): void {
    if (this.lost !== undefined) {
      return;
    }
    const said = this.errors.trim().split('\n').slice(-3).join(' ');
    this.lost = said === '' ? why : `${why} It said: ${said}`;
    const waiting = this.waiting;
    this.settle();
    this.process.kill('SIGKILL');
    this.options.onLost?.(this.lost);
    waiting?.reject(new HelperLost(this.lost, true));
  }
}
