// What differs between two looks at one window.

import { everyNode, saysSomething, type Node } from './node.js';
import type { Observation } from './observation.js';

export interface Differences {
  /** The tops of what is new; what is below them is new too, or came along. */
  added: Node[];
  /** The tops of what is gone, as they were, and how much is gone with each. */
  removed: { node: Node; below: number }[];
  changed: { node: Node; was: Node }[];
  /** Where the focus went, when it did. */
  focused: Node | undefined;
  /** How many stayed what they are, at another place. */
  moved: number;
  /** Whether a node of the later look was not in the earlier one. */
  isNew(node: Node): boolean;
}

function saysOther(node: Node, was: Node): boolean {
  return (
    node.role !== was.role ||
    node.name !== was.name ||
    node.value !== was.value ||
    node.description !== was.description ||
    node.enabled !== was.enabled ||
    node.selected !== was.selected ||
    node.checked !== was.checked ||
    node.expanded !== was.expanded ||
    node.url !== was.url
  );
}

function stands(node: Node): string {
  const box = node.bounds;
  return box === undefined ? '' : `${box.x},${box.y},${box.width},${box.height}`;
}

/** Both must be looks at one window; `after` is the later one. */
export function differences(before: Observation, after: Observation): Differences {
  const result: Differences = {
    added: [],
    removed: gone(before.roots, after),
    changed: [],
    focused: undefined,
    moved: 0,
    isNew: (node) => !before.byNumber.has(node.number),
  };
  for (const node of everyNode(after.roots)) {
    const was = before.byNumber.get(node.number);
    if (was === undefined) {
      if (node.parent === undefined || before.byNumber.has(node.parent.number)) {
        result.added.push(node);
      }
    } else {
      if (saysOther(node, was)) {
        result.changed.push({ node, was });
      }
      if (stands(node) !== stands(was)) {
        result.moved++;
      }
    }
    if (node.focused && was?.focused !== true) {
      result.focused = node;
    }
  }
  return result;
}

/** What says nothing goes with all that is in it, or unnoticed. */
function gone(roots: readonly Node[], after: Observation): { node: Node; below: number }[] {
  const isGone = (node: Node) => !after.byNumber.has(node.number);
  const found: { node: Node; below: number }[] = [];
  const within = new Set<Node>();
  for (const node of everyNode(roots)) {
    if (node.parent !== undefined && within.has(node.parent)) {
      within.add(node);
    } else if (isGone(node)) {
      const inside = [...everyNode(node.children)];
      const below = inside.filter(isGone).length;
      if (saysSomething(node) || (below > 0 && below === inside.length)) {
        within.add(node);
        found.push({ node, below });
      }
    }
  }
  return found;
}

/** How many lines of the window differ. */
export function extent(found: Differences): number {
  return found.added.length + found.removed.length + found.changed.length;
}
