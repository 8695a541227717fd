// One look at a window of a target, and the looks that may still be asked about.

import { everyNode, readTree, type Bounds, type Node } from './node.js';
import { likeness, number } from './numbering.js';

/** An application that was opened, and what its windows looked like last. */
export interface Target {
  /** What its observations begin with: "kfm". */
  letters: string;
  bundleId: string;
  name: string;
  site: string | undefined;
  /** The last look at each of its windows, the latest first. */
  windows: Observation[];
  nextNumber: number;
  nextLook: number;
  nextWindow: number;
}

export interface Observation {
  /** "kfm7"; its nodes are "kfm7.12". */
  tag: string;
  target: Target;
  /** When the helper was asked, in milliseconds of the process's clock. */
  at: number;
  title: string;
  roots: Node[];
  byNumber: Map<number, Node>;
  /** The same for all looks at one window of the target. */
  window: number;
  bounds: Bounds | undefined;
  /** The tree is not whole: a limit was reached, or the application fell silent. */
  truncated: boolean;
  /** Why its nodes cannot be acted on any more; undefined while they can. */
  ended: string | undefined;
}

const rememberedWindows = 6;

export interface Look {
  at: number;
  title: string;
  wires: readonly unknown[];
  truncated: boolean;
  /** Takes secrets out of what the window says. */
  redact?: (text: string) => string;
}

/** An application that was just opened and has not been looked at. */
export function newTarget(
  letters: string,
  app: { bundleId: string; name: string },
  site: string | undefined,
): Target {
  const { bundleId, name } = app;
  return { letters, bundleId, name, site, windows: [], nextNumber: 1, nextLook: 1, nextWindow: 1 };
}

function sameBounds(a: Bounds | undefined, b: Bounds | undefined): boolean {
  return (
    a !== undefined && a.x === b?.x && a.y === b.y && a.width === b.width && a.height === b.height
  );
}

// A page that was left has little in common with the next one, a dialog over it something.
const likeEnough = 0.8;

/** The remembered look at the same window: told by its title, its place and what is in it. */
function lookBefore(target: Target, title: string, roots: Node[]): Observation | undefined {
  let best: Observation | undefined;
  let bestScore = 0;
  for (const window of target.windows) {
    const named = window.title === title;
    const placed = sameBounds(window.bounds, roots[0]?.bounds);
    const like = likeness(window.roots, roots);
    const score = (named ? 1 : 0) + (placed ? 1 : 0) + like;
    if ((named || placed || like >= likeEnough) && score > bestScore) {
      best = window;
      bestScore = score;
    }
  }
  return best;
}

/** Makes an observation of what the helper saw, and remembers it as the last of its window. */
export function observationOf(target: Target, look: Look): Observation {
  const roots = readTree(look.wires, look.redact);
  const before = lookBefore(target, look.title, roots);
  number(before?.roots ?? [], roots, () => target.nextNumber++);
  const observation: Observation = {
    tag: `${target.letters}${target.nextLook++}`,
    target,
    at: look.at,
    title: look.title,
    roots,
    byNumber: new Map([...everyNode(roots)].map((node) => [node.number, node])),
    window: before?.window ?? target.nextWindow++,
    bounds: roots[0]?.bounds,
    truncated: look.truncated,
    ended: undefined,
  };
  // What an application that fell silent did not tell is not gone: its numbers are kept for when it does.
  const isRest = look.truncated && observation.byNumber.size < (before?.byNumber.size ?? 0) / 2;
  if (!isRest) {
    const others = target.windows.filter((window) => window !== before);
    target.windows = [observation, ...others].slice(0, rememberedWindows);
  }
  return observation;
}

/** Whether both look at the same window. */
export function sameWindow(before: Observation, after: Observation): boolean {
  return after.target === before.target && after.window === before.window;
}

/** Looks by tag; old ones are forgotten. */
export class Observations {
  private readonly byTag = new Map<string, Observation>();

  constructor(private readonly most = 16) {}

  add(observation: Observation): void {
    this.byTag.set(observation.tag, observation);
    for (const tag of this.byTag.keys()) {
      if (this.byTag.size <= this.most) {
        break;
      }
      this.byTag.delete(tag);
    }
  }

  find(tag: string): Observation | undefined {
    return this.byTag.get(tag);
  }

  /** The last look at a target. */
  lastOf(target: Target): Observation | undefined {
    return [...this.byTag.values()].filter((one) => one.target === target).pop();
  }

  endAll(why: string): void {
    for (const observation of this.byTag.values()) {
      observation.ended ??= why;
    }
  }
}
