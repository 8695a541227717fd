// How often the tools may be called.

import { Refused } from '../desk/queue.js';

/** Lets `perMinute` calls through a minute, a quarter of them at once. */
export class RateLimit {
  private tokens: number;
  private at: number;

  constructor(
    readonly perMinute: number,
    private readonly now: () => number = () => performance.now(),
  ) {
    this.tokens = this.burst;
    this.at = now();
  }

  private get burst(): number {
    return Math.max(1, Math.ceil(this.perMinute / 4));
  }

  /** Throws Refused when `count` calls are too many now. */
  take(count = 1): void {
    const now = this.now();
    this.tokens = Math.min(this.burst, this.tokens + ((now - this.at) / 60_000) * this.perMinute);
    this.at = now;
    if (this.tokens < count) {
      const seconds = Math.ceil(((count - this.tokens) / this.perMinute) * 60);
      throw new Refused(
        'rate_limited',
        `More than ${this.perMinute} calls a minute; nothing was done.`,
        `Call again in ${seconds} s.`,
      );
    }
    this.tokens -= count;
  }
}
