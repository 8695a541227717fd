// What changed from one observation to the next, for a reader.
//
// src/window/differences.ts tells an agent what differs between two looks of one conversation, whose
// nodes are numbered and compacted for it. A recording has what the helper said, also to servers that
// number nothing; a person reads all of it, with the titles of windows, and sees where it is.

import { bounded } from './html.js';
import { describeNode, statesOf, type Node, type Observation, type Rect } from './observation.js';

export interface Change {
  kind: 'appeared' | 'gone' | 'changed';
  text: string;
  /** Where it is in the later observation. */
  bounds: Rect | undefined;
}

/**
 * Pairs the nodes of both observations by where they hang and what they are called; what is left, by
 * where they hang alone, so that a label with another text is one change and not two.
 */
export function changesBetween(before: Observation, after: Observation): Change[] {
  const pairs = new Map<Node, Node>();
  const rest = pair(keyed(before.nodes, true), keyed(after.nodes, true), pairs);
  pair(keyed(before.nodes, false, rest.before), keyed(after.nodes, false, rest.after), pairs);
  const changes: Change[] = [];
  if (before.title !== after.title) {
    changes.push(changed(`the window is called “${after.title}”, before “${before.title}”`));
  }
  const kept = new Set(pairs.values());
  const added = topmost(after.nodes, (node) => !kept.has(node));
  const gone = topmost(before.nodes, (node) => !pairs.has(node));
  changes.push(
    ...added.map(({ node, below }) => ({
      kind: 'appeared' as const,
      text: describeNode(node) + andBelow(below),
      bounds: node.bounds,
    })),
    ...gone.map(({ node, below }) => ({
      kind: 'gone' as const,
      text: describeNode(node) + andBelow(below),
      bounds: undefined,
    })),
  );
  for (const [old, now] of pairs) {
    const text = differenceOf(old, now);
    if (text !== undefined) {
      changes.push(changed(`${describeNode(old)}: ${text}`, now.bounds));
    }
  }
  return changes;
}

function changed(text: string, bounds?: Rect): Change {
  return { kind: 'changed', text, bounds };
}

type Keyed = Map<string, Node[]>;

/** Nodes by parent, role and, when asked for, name. Parents are told apart by their own keys. */
function keyed(nodes: Node[], named: boolean, only?: Set<Node>): Keyed {
  const keys = new Map<string, string>();
  const found: Keyed = new Map();
  for (const node of nodes) {
    const parent = typeof node.parentId === 'string' ? (keys.get(node.parentId) ?? '') : '';
    const own = `${parent}/${node.rawRole ?? node.role}`;
    // The name of a window is its title, which is compared for itself.
    const key = named && parent !== '' ? `${own} ${node.name}` : own;
    keys.set(node.id, own);
    if (only === undefined || only.has(node)) {
      const same = found.get(key);
      if (same === undefined) {
        found.set(key, [node]);
      } else {
        same.push(node);
      }
    }
  }
  return found;
}

/** Pairs nodes of the same key in their order. Gives what is left over on both sides. */
function pair(before: Keyed, after: Keyed, pairs: Map<Node, Node>) {
  const left = { before: new Set<Node>(), after: new Set<Node>() };
  for (const [key, old] of before) {
    const now = after.get(key) ?? [];
    old.forEach((node, at) => {
      const other = now[at];
      if (other === undefined) {
        left.before.add(node);
      } else {
        pairs.set(node, other);
      }
    });
  }
  for (const [key, now] of after) {
    now.slice(before.get(key)?.length ?? 0).forEach((node) => left.after.add(node));
  }
  return left;
}

/** The nodes that are in question and whose parent is not, with how many are below each. */
function topmost(nodes: Node[], inQuestion: (node: Node) => boolean) {
  const tops = new Map<string, { node: Node; below: number }>();
  for (const node of nodes.filter(inQuestion)) {
    const above = typeof node.parentId === 'string' ? tops.get(node.parentId) : undefined;
    if (above !== undefined) {
      above.below += 1;
      tops.set(node.id, above);
    } else {
      tops.set(node.id, { node, below: 0 });
    }
  }
  return [...new Set(tops.values())];
}

function andBelow(count: number): string {
  return count === 0 ? '' : ` and ${count} in it`;
}

function differenceOf(before: Node, now: Node): string | undefined {
  const parts: string[] = [];
  if (before.name !== now.name && typeof now.parentId === 'string') {
    parts.push(`now “${bounded(now.name, 200)}”`);
  }
  if ((before.value ?? '') !== (now.value ?? '') && now.value !== now.name) {
    parts.push(
      `value “${bounded(now.value ?? '', 200)}”, before “${bounded(before.value ?? '', 200)}”`,
    );
  }
  const [old, states] = [statesOf(before), statesOf(now)];
  const came = states.filter((state) => !old.includes(state));
  const went = old.filter((state) => !states.includes(state)).map((state) => `no longer ${state}`);
  parts.push(...came, ...(came.length === 0 || went.length > came.length ? went : []));
  return parts.length === 0 ? undefined : parts.join(', ');
}
