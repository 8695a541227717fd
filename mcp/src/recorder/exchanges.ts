// A recording as a conversation: each request with its answer, in the order of the requests.

import type { Damage, Entry } from './recording.js';

export interface Exchange {
  kind: 'exchange';
  /** Its number in the recording, from 1. */
  number: number;
  /** Which helper process it was asked of, from 1. */
  run: number;
  /** Milliseconds since the recording began. */
  askedAt: number;
  /** Undefined when there was no answer: the helper ended first, or the recording did. */
  answeredAt: number | undefined;
  /** The request; undefined when it was no JSON object. */
  request: Record<string, unknown> | undefined;
  answer: Record<string, unknown> | undefined;
  /** The answer where it was no JSON object. */
  nonsense: string | undefined;
}

export type Happening = Exclude<Entry, { kind: 'request' | 'answer' }> | Damage | Exchange;

/** Joins requests and answers. What has no answer comes when the helper or the recording ends. */
export async function* exchangesOf(
  entries: AsyncIterable<Entry | Damage>,
): AsyncGenerator<Happening> {
  let number = 0;
  let run = 0;
  let open: Exchange[] = [];
  for await (const entry of entries) {
    switch (entry.kind) {
      case 'request': {
        const asked = { askedAt: entry.ms, answeredAt: undefined, request: entry.body };
        const nothing = { answer: undefined, nonsense: undefined };
        number += 1;
        open.push({ kind: 'exchange', number, run: Math.max(run, 1), ...asked, ...nothing });
        break;
      }
      case 'answer': {
        // An answer that names no request is the oldest one's: the helper answers in order.
        const asked =
          open.find((each) => !isAnswered(each) && each.request?.['id'] === entry.body?.['id']) ??
          open.find((each) => !isAnswered(each));
        if (asked !== undefined) {
          asked.answeredAt = entry.ms;
          asked.answer = entry.body;
          asked.nonsense = entry.text;
        }
        break;
      }
      case 'started':
      case 'ended':
        yield* open;
        open = [];
        run += entry.kind === 'started' ? 1 : 0;
        yield entry;
        break;
      default:
        yield entry;
    }
    // Answers come in the order of the requests, so one that was passed over is lost.
    const done = open.findLastIndex(isAnswered) + 1;
    yield* open.splice(0, done);
  }
  yield* open;
}

function isAnswered(exchange: Exchange): boolean {
  return exchange.answeredAt !== undefined;
}
