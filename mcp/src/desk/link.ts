// The line to the helper: started when it is needed, replaced when it is lost.

import { randomInt } from 'node:crypto';

import type { Secrets } from '../access/secrets.js';
import { HelperClient, type HelperResult } from '../helper/client.js';
import type { FoundHelper } from '../helper/find.js';
import type { HelperTap } from '../helper/tap.js';
import { Refused } from './queue.js';

export interface LinkOptions {
  /** The helper's program; a sentence when there is none. */
  helper: FoundHelper | string;
  environment: NodeJS.ProcessEnv;
  /** The environment of a desktop that is being started, for the helper instead of the other. */
  desktop?: Promise<NodeJS.ProcessEnv> | undefined;
  secrets: Secrets;
  tap?: HelperTap | undefined;
  /** How long the helper may take for an answer that takes no time of its own. */
  answerMs: number;
}

/** A helper that has not answered after this long never will. */
export const answerMs = 10_000;

export class HelperLink {
  private client: HelperClient | undefined;
  private closed = false;

  constructor(
    readonly options: LinkOptions,
    /** Called when a helper is gone, with why: everything of it is worth nothing from then on. */
    private readonly onLost: (why: string) => void,
  ) {}

  /** Whether a helper is running. */
  get alive(): boolean {
    return this.client?.alive === true;
  }

  get pid(): number | undefined {
    return this.alive ? this.client?.pid : undefined;
  }

  /**
   * Asks what takes `extraMs` longer than an answer at once. Throws HelperRefusal, HelperLost, or
   * Refused when there is no helper to start.
   */
  async ask(
    method: string,
    args: Record<string, unknown> = {},
    extraMs = 0,
  ): Promise<HelperResult> {
    const environment = await this.environment();
    return this.running(environment).request(method, args, this.options.answerMs + extraMs);
  }

  /** What the helper gets; throws Refused when there is no desktop to give it. */
  async environment(): Promise<NodeJS.ProcessEnv> {
    try {
      return (await this.options.desktop) ?? this.options.environment;
    } catch (error) {
      const why = error instanceof Error ? error.message : String(error);
      throw new Refused('no_desktop', why, 'Tell the user.');
    }
  }

  private running(environment: NodeJS.ProcessEnv): HelperClient {
    if (this.client?.alive === true) {
      return this.client;
    }
    const { helper, secrets, tap } = this.options;
    if (typeof helper === 'string' || this.closed) {
      const why = typeof helper === 'string' ? helper : 'The server is ending.';
      throw new Refused('no_helper', why, 'Tell the user.');
    }
    const client: HelperClient = new HelperClient({
      command: helper.command,
      environment,
      tap,
      redact: (line) => secrets.redactLine(line),
      onLost: (why) => {
        if (this.client === client) {
          this.client = undefined;
        }
        this.onLost(why);
      },
    });
    this.client = client;
    return client;
  }

  /** Ends the helper; none is started after it. */
  async close(): Promise<void> {
    this.closed = true;
    await this.client?.close();
  }

  /** Ends the helper at once, when there is no time to wait. */
  kill(): void {
    this.closed = true;
    this.client?.kill();
  }
}

const consonants = 'bcdfghjklmnpqrstvwxz';

/** Three letters that are taken by none of `others`: hard to guess, and not a word. */
export function freshLetters(others: ReadonlyMap<string, unknown>): string {
  for (;;) {
    const letters = Array.from({ length: 3 }, () => consonants[randomInt(consonants.length)]);
    if (!others.has(letters.join(''))) {
      return letters.join('');
    }
  }
}
