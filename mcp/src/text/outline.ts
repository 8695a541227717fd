// A tree as an indented outline that never exceeds its budget, filled by importance.

import { everyNode, type Bounds, type Node } from '../window/node.js';
import { lineOf, outlineStyle, type LineStyle } from './line.js';

export interface OutlineRequest {
  roots: readonly Node[];
  /** What handles begin with: "kfm7". */
  tag: string;
  /** In characters, line ends included. */
  budget: number;
  /** Of the window: what lies outside counts for less. */
  view?: Bounds | undefined;
  style?: LineStyle;
  /** Shown before all others: what a search found. */
  wanted?: ReadonlySet<Node>;
  /** Only these and what leads to them; nothing of it is counted as cut. */
  only?: boolean;
}

export interface Outline {
  text: string;
  shown: number;
  cut: number;
}

const deepestIndent = 12;
// A closed menu is reached by find and by under; it may not crowd out what is on the screen.
const menuShare = 0.08;

interface Entry {
  node: Node;
  parent: Entry | undefined;
  children: Entry[];
  depth: number;
  order: number;
  /** Itself and all below it. */
  size: number;
  score: number;
  line: string;
  cutLine: number;
  shown: boolean;
  hidden: number;
}

function isOnScreen(node: Node, view: Bounds | undefined): boolean {
  const box = node.bounds;
  if (box === undefined || node.inMenu) {
    return false;
  }
  return (
    view === undefined ||
    (box.x < view.x + view.width &&
      box.x + box.width > view.x &&
      box.y < view.y + view.height &&
      box.y + box.height > view.y)
  );
}

const dialogs = new Set(['dialog', 'sheet', 'alert', 'popover']);

function score(node: Node, parent: Entry | undefined, request: OutlineRequest): number {
  const inDialog = dialogs.has(node.role) || (parent !== undefined && parent.score >= 32);
  return (
    (request.wanted?.has(node) === true ? 64 : 0) +
    (inDialog ? 32 : 0) +
    (node.focused ? 16 : 0) +
    (!node.inMenu && (node.clickable || node.editable) ? 8 : 0) +
    (isOnScreen(node, request.view) ? 4 : 0) +
    (node.name !== '' || node.value !== '' ? 2 : 0) +
    (node.inMenu ? 0 : 1)
  );
}

function indent(depth: number): string {
  return ' '.repeat(Math.min(depth, deepestIndent));
}

function cutText(entry: Entry, tag: string, count: number): string {
  return `${indent(entry.depth + 1)}+${count} under ${tag}.${entry.node.number}`;
}

function entriesOf(request: OutlineRequest): { roots: Entry[]; all: Entry[] } {
  const byNode = new Map<Node, Entry>();
  const roots: Entry[] = [];
  const all: Entry[] = [];
  for (const node of everyNode(request.roots)) {
    const parent = node.parent === undefined ? undefined : byNode.get(node.parent);
    const depth = parent === undefined ? 0 : parent.depth + 1;
    const line = indent(depth) + lineOf(node, request.style ?? outlineStyle);
    const entry: Entry = {
      node,
      parent,
      children: [],
      depth,
      order: all.length,
      size: 1,
      score: score(node, parent, request),
      line,
      cutLine: 0,
      shown: false,
      hidden: 0,
    };
    byNode.set(node, entry);
    all.push(entry);
    (parent?.children ?? roots).push(entry);
  }
  for (const entry of [...all].reverse()) {
    entry.cutLine =
      entry.children.length === 0 ? 0 : cutText(entry, request.tag, entry.size).length + 1;
    entry.hidden = entry.children.length;
    if (entry.parent !== undefined) {
      entry.parent.size += entry.size;
    }
  }
  return { roots, all };
}

/** What showing it takes: its line, those that lead to it, and the notes of what stays cut under them. */
function cost(entry: Entry): number {
  let total = 0;
  for (let at: Entry | undefined = entry; at !== undefined && !at.shown; at = at.parent) {
    total += at.line.length + 1 + at.cutLine;
  }
  return total;
}

/** Shows it, and gives what it took; the note of a parent that has nothing cut any more comes back. */
function show(entry: Entry): number {
  let total = 0;
  for (let at: Entry | undefined = entry; at !== undefined && !at.shown; at = at.parent) {
    at.shown = true;
    total += at.line.length + 1 + at.cutLine;
    if (at.parent !== undefined && --at.parent.hidden === 0 && at.parent.shown) {
      total -= at.parent.cutLine;
    } else if (at.parent?.hidden === 0) {
      // It is shown right after, without a note.
      at.parent.cutLine = 0;
    }
  }
  return total;
}

function ranked(all: readonly Entry[], request: OutlineRequest): Entry[] {
  const list =
    request.only === true ? all.filter((one) => request.wanted?.has(one.node)) : [...all];
  return list.sort((a, b) => {
    if (a.score !== b.score) {
      return b.score - a.score;
    }
    // The menus before what is in them.
    return a.node.inMenu && b.node.inMenu && a.depth !== b.depth
      ? a.depth - b.depth
      : a.order - b.order;
  });
}

function fill(all: readonly Entry[], request: OutlineRequest, budget: number): void {
  const underMenu = request.roots.every((root) => root.inMenu);
  let left = budget;
  let leftForMenus = underMenu || request.only === true ? budget : Math.floor(budget * menuShare);
  for (const entry of ranked(all, request)) {
    if (entry.shown) {
      continue;
    }
    const needed = cost(entry);
    if (needed > left || (entry.node.inMenu && needed > leftForMenus)) {
      continue;
    }
    const took = show(entry);
    left -= took;
    if (entry.node.inMenu) {
      leftForMenus -= took;
    }
  }
}

function written(roots: readonly Entry[], request: OutlineRequest): string[] {
  const lines: string[] = [];
  const write = (entry: Entry): number => {
    if (!entry.shown) {
      return entry.size;
    }
    lines.push(entry.line);
    let cut = 0;
    for (const child of entry.children) {
      cut += write(child);
    }
    if (cut > 0 && request.only !== true) {
      lines.push(cutText(entry, request.tag, cut));
    }
    return 0;
  };
  for (const root of roots) {
    write(root);
  }
  return lines;
}

/** The outline; never longer than its budget. */
export function outline(request: OutlineRequest): Outline {
  const { roots, all } = entriesOf(request);
  // A last line for roots that are cut themselves.
  const rest = `+${all.length} more in ${request.tag}: find`;
  fill(all, request, request.budget - rest.length - 1);
  const lines = written(roots, request);
  const hiddenRoots = roots.filter((root) => !root.shown);
  if (hiddenRoots.length > 0 && request.only !== true && rest.length < request.budget) {
    const count = hiddenRoots.reduce((total, root) => total + root.size, 0);
    lines.push(`+${count} more in ${request.tag}: find`);
  }
  const shown = all.filter((entry) => entry.shown).length;
  return { text: lines.join('\n'), shown, cut: all.length - shown };
}
