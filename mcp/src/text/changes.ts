// What changed, as lines: "~" says something else now, "+" is new, "-" is gone.

import type { Differences } from '../window/differences.js';
import { everyNode, type Node } from '../window/node.js';
import type { Observation } from '../window/observation.js';
import { brief, lineOf, nameOf, outlineStyle, states } from './line.js';
import { outline } from './outline.js';
import { quoted } from './safe.js';

function was(node: Node, before: Node): string {
  const parts: string[] = [];
  const name = nameOf(before);
  if (nameOf(node) !== name) {
    parts.push(name === '' ? 'nameless' : quoted(name, 60));
  }
  if (
    node.value !== before.value &&
    !node.secure &&
    (before.value === '' || before.value !== name)
  ) {
    parts.push(before.value === '' ? 'empty' : `= ${quoted(before.value, 60)}`);
  }
  const without = (list: string[]) => list.filter((state) => state !== 'focused').join(' ');
  const stood = without(states(before));
  if (stood !== without(states(node))) {
    parts.push(stood === '' ? 'not so' : stood);
  }
  return parts.length === 0 ? '' : ` (was ${parts.join(' ')})`;
}

/** What came to one place: alone with that place behind it, several below it. */
function addition(nodes: readonly Node[], found: Differences, after: Observation, budget: number) {
  const [first] = nodes;
  const parent = first?.parent;
  const news = nodes.flatMap((node) => [...everyNode([node])]).filter((node) => found.isNew(node));
  const tree = outline({
    roots: nodes,
    tag: after.tag,
    budget: Math.max(0, Math.floor(budget * 0.9)),
    view: after.bounds,
    // What only got another place inside of it is not new.
    ...(news.length < size(nodes) ? { wanted: new Set(news), only: true } : {}),
  });
  const lines = tree.text.split('\n');
  const where = parent === undefined ? '' : ` (in ${brief(parent)})`;
  if (nodes.length > 1) {
    return [`+${parent === undefined ? '' : ` in ${brief(parent)}`}`, ...lines.map(indented)].join(
      '\n',
    );
  }
  return [`+ ${lines[0] ?? ''}${where}`, ...lines.slice(1).map(indented)].join('\n');
}

function indented(line: string): string {
  return `  ${line}`;
}

function size(nodes: readonly Node[]): number {
  return nodes.reduce((total, node) => total + [...everyNode([node])].length, 0);
}

/** Nodes that came to the same place, in their order. */
function byParent(nodes: readonly Node[]): Node[][] {
  const groups = new Map<Node | undefined, Node[]>();
  for (const node of nodes) {
    const group = groups.get(node.parent);
    if (group === undefined) {
      groups.set(node.parent, [node]);
    } else {
      group.push(node);
    }
  }
  return [...groups.values()];
}

function removal(node: Node, below: number): string {
  return `- ${brief(node)}${below > 0 ? ` and ${below} below it` : ''}`;
}

interface Item {
  weight: number;
  /** At most about `budget` characters. */
  write(budget: number): string;
}

function items(found: Differences, after: Observation): Item[] {
  const act = (node: Node) => (node.clickable || node.editable ? 1 : 0);
  return [
    ...found.changed.map(({ node, was: before }) => ({
      weight: node.inMenu ? 0 : 4 + act(node),
      write: () => `~ ${lineOf(node, outlineStyle)}${was(node, before)}`,
    })),
    ...byParent(found.added).map((nodes) => ({
      weight: nodes.every((node) => node.inMenu) ? 0 : 3 + Math.max(...nodes.map(act)),
      write: (budget: number) => addition(nodes, found, after, budget),
    })),
    ...found.removed.map(({ node, below }) => ({
      weight: node.inMenu ? 0 : 2 + act(node) * 0.5,
      write: () => removal(node, below),
    })),
  ];
}

/** The changes of a window in at most `budget` characters; empty when nothing differs. */
export function changes(found: Differences, after: Observation, budget: number): string {
  const all = items(found, after).sort((a, b) => b.weight - a.weight);
  const note = (count: number) => `… ${count} more changes: observe ${after.target.letters}`;
  const lines: string[] = [];
  let left = budget - note(all.length).length - 1;
  if (found.focused !== undefined) {
    const line = `focus is on ${brief(found.focused)}`;
    if (line.length < left) {
      lines.push(line);
      left -= line.length + 1;
    }
  }
  let skipped = 0;
  for (const item of all) {
    const line = left > 40 ? item.write(left) : undefined;
    if (line === undefined || line.length + 1 > left) {
      skipped++;
      continue;
    }
    lines.push(line);
    left -= line.length + 1;
  }
  if (all.length === 0 && found.moved > 0) {
    const line = `${found.moved} lines are at another place`;
    if (line.length < left) {
      lines.push(line);
    }
  }
  if (skipped > 0) {
    lines.push(note(skipped));
  }
  return lines.join('\n');
}
