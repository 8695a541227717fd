// One thing at a time on the one desktop, in the order in which it was asked for.

export class Refused extends Error {
  override readonly name = 'Refused';

  constructor(
    readonly code: string,
    message: string,
    /** What to do next. */
    readonly next: string,
  ) {
    super(message);
  }
}

export class Cancelled extends Error {
  override readonly name = 'Cancelled';

  constructor() {
    super('The call was cancelled before anything happened.');
  }
}

export class Queue {
  private tail: Promise<unknown> = Promise.resolve();
  private waiting = 0;

  constructor(private readonly most = 64) {}

  /** Runs `work` when all that came before it is done; not at all when it was cancelled until then. */
  async run<T>(signal: AbortSignal, work: () => Promise<T>): Promise<T> {
    if (this.waiting >= this.most) {
      throw new Refused(
        'busy',
        `${this.waiting} calls are waiting already; nothing was done.`,
        'Wait for their answers, then call again.',
      );
    }
    this.waiting++;
    const before = this.tail;
    let release = (): void => undefined;
    this.tail = new Promise<void>((resolve) => {
      release = resolve;
    });
    try {
      await before;
      if (signal.aborted) {
        throw new Cancelled();
      }
      return await work();
    } finally {
      this.waiting--;
      release();
    }
  }
}
