// What a handle stands for, or why it stands for nothing any more.

import type { Node } from '../window/node.js';
import type { Observation, Observations, Target } from '../window/observation.js';
import { quoted } from '../text/safe.js';
import { Refused } from './queue.js';

/** The helper forgets an observation after 60 s; a little less leaves time to ask it. */
export const lifetimeMs = 59_000;

/** A handle that cannot be used; the answer shows the place where it was. */
export class Stale extends Refused {
  constructor(
    code: 'stale_observation' | 'unknown_observation' | 'unknown_node',
    message: string,
    readonly target: Target | undefined,
    /** The look that the handle was of, while it is remembered. */
    readonly observation: Observation | undefined,
    readonly number: number | undefined,
  ) {
    super(
      code,
      `${message} Nothing was done.`,
      target === undefined
        ? 'Call open_target, then use the handles of its answer.'
        : 'Take the node from the fresh lines below and try once more.',
    );
  }
}

const shape = /^([a-z]{3})([0-9]{1,9})(?:\.([0-9]{1,9}))?$/;

interface Parsed {
  letters: string;
  tag: string;
  number: number | undefined;
}

function parsed(handle: string): Parsed {
  const found = shape.exec(handle.trim());
  if (found === null) {
    throw new Refused(
      'invalid_handle',
      `${quoted(handle, 40)} is no node.`,
      'Give <observation>.<number> as the last answer has them, such as kfm7.12.',
    );
  }
  const [, letters = '', look = '', number] = found;
  return {
    letters,
    tag: letters + look,
    number: number === undefined ? undefined : Number(number),
  };
}

export interface Resolved {
  observation: Observation;
  node: Node;
}

export class Handles {
  constructor(
    private readonly targets: ReadonlyMap<string, Target>,
    private readonly observations: Observations,
    private readonly now: () => number,
  ) {}

  /** A remembered look, used or not, by its tag or one of its nodes. */
  observation(handle: string): { observation: Observation; number: number | undefined } {
    const { letters, tag, number } = parsed(handle);
    const target = this.targets.get(letters);
    if (target === undefined) {
      throw new Stale(
        'unknown_observation',
        `${tag} is of another server process, or of nobody.`,
        undefined,
        undefined,
        number,
      );
    }
    const observation = this.observations.find(tag);
    if (observation === undefined) {
      const message = `${tag} is not remembered any more.`;
      throw new Stale('stale_observation', message, target, undefined, number);
    }
    return { observation, number };
  }

  /** The node of a handle, to read. */
  node(handle: string): Resolved {
    const { observation, number } = this.observation(handle);
    const node = number === undefined ? undefined : observation.byNumber.get(number);
    if (node === undefined) {
      const what = number === undefined ? 'names no line' : `has no line ${number}`;
      const message = `${observation.tag} ${what}.`;
      throw new Stale('unknown_node', message, observation.target, observation, number);
    }
    return { observation, node };
  }

  /** The node of a handle, to act on: only the last look of all can be acted on. */
  actable(handle: string): Resolved {
    const { observation, number } = this.observation(handle);
    const age = this.now() - observation.at;
    const why = observation.ended ?? (age > lifetimeMs ? 'it is over a minute old' : undefined);
    if (why !== undefined) {
      const message = `${observation.tag} cannot be acted on: ${why}.`;
      throw new Stale('stale_observation', message, observation.target, observation, number);
    }
    return this.node(handle);
  }

  /** What a look or a search is about: a target by its letters, a handle or a name; else the only one. */
  target(text: string | undefined): Target {
    const all = [...this.targets.values()];
    const [first] = all;
    if (first === undefined) {
      throw new Refused('no_target', 'No application is open.', 'Call open_target first.');
    }
    if (text === undefined) {
      if (all.length > 1) {
        throw new Refused(
          'ambiguous_target',
          `Several applications are open: ${list(all)}.`,
          'Say which: target.',
        );
      }
      return first;
    }
    const wanted = text.trim().toLowerCase();
    const letters = /^([a-z]{3})[0-9]*(\.[0-9]+)?$/.exec(wanted)?.[1] ?? '';
    const found =
      this.targets.get(letters) ??
      all.find((one) => one.bundleId.toLowerCase() === wanted || one.name.toLowerCase() === wanted);
    if (found === undefined) {
      throw new Refused(
        'unknown_target',
        `${quoted(text, 60)} is not open; open are: ${list(all)}.`,
        'Name one of these, or call open_target.',
      );
    }
    return found;
  }
}

function list(targets: readonly Target[]): string {
  const shown = targets.slice(-10).map((one) => `${one.letters} ${quoted(one.name, 40)}`);
  return shown.join(', ');
}
