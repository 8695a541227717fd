// What a tool is, what it is called with, and what it answers.

import type { InputRequiredResult } from '@modelcontextprotocol/server';
import type * as z from 'zod';

import type { RateLimit } from '../access/rate.js';
import type { Desk } from '../desk/desk.js';
import type { Options } from '../options.js';
import type { Picture } from '../picture/picture.js';

/** Nothing that leaves the server is longer, unless the caller asks for more. */
export const defaultBudget = 20_000;

export interface Answer {
  text: string;
  picture?: Picture | undefined;
  isError?: boolean;
  /** How long the text may be; the default when left out. */
  budget?: number | undefined;
}

/** What is there for every call of the server. */
export interface House {
  desk: Desk;
  options: Options;
  rate: RateLimit;
  version: string;
}

/** What belongs to one call. */
export interface Call {
  signal: AbortSignal;
  /** Asks the user; true when agreed, a refusal or the question itself are thrown. */
  confirm(question: string): void;
}

/** Thrown by `confirm` while the user has not been asked yet; becomes the call's result. */
export class NeedsInput extends Error {
  constructor(readonly result: InputRequiredResult) {
    super('The user is asked first.');
  }
}

export interface ToolHints {
  readOnlyHint?: boolean;
  destructiveHint?: boolean;
  idempotentHint?: boolean;
  openWorldHint?: boolean;
}

export interface Tool {
  name: string;
  description: string;
  schema: z.ZodType;
  hints: ToolHints;
  /** It acts on an application, and is left out of a server that only reads. */
  acts: boolean;
  run(args: unknown, call: Call, house: House): Promise<Answer>;
}

interface Definition<Schema extends z.ZodType> extends Omit<Tool, 'run' | 'schema' | 'acts'> {
  schema: Schema;
  acts?: boolean;
  run(args: z.infer<Schema>, call: Call, house: House): Promise<Answer>;
}

/** A tool; `run` is given arguments that fit its schema. */
export function tool<Schema extends z.ZodType>(definition: Definition<Schema>): Tool {
  return {
    ...definition,
    acts: definition.acts ?? false,
    run: (args, call, house) => definition.run(args as z.infer<Schema>, call, house),
  };
}
