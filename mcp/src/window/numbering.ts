// Gives the nodes of a look the numbers that the same elements had in the look before.
//
// Elements have no identity across looks, so two are taken for the same when they stand at the same
// place of the tree and are called the same. A number is a name for the reader: what is acted on is
// always the element of one look, which the helper proves again.

import { everyNode, type Node } from './node.js';

function key(node: Node): string {
  return `${node.rawRole}|${node.role}|${node.name}|${node.url ?? ''}`;
}

function contentKeys(roots: readonly Node[]): Map<Node, string> {
  const keys = new Map<Node, string>();
  // Children come after their parents, so backwards every child is done first.
  for (const node of [...everyNode(roots)].reverse()) {
    const inner = node.children.map((child) => keys.get(child) ?? '').join(',');
    const whole = `${key(node)}|${node.value}(${inner})`;
    // Long ones are told apart by their sum; a clash only means a number that moves.
    keys.set(node, whole.length > 200 ? `#${sum(whole)}` : whole);
  }
  return keys;
}

function sum(text: string): string {
  let a = 0x811c9dc5;
  let b = 7;
  for (let index = 0; index < text.length; index++) {
    const code = text.charCodeAt(index);
    a = Math.imul(a ^ code, 0x01000193);
    b = (Math.imul(b, 31) + code) | 0;
  }
  return `${a >>> 0}.${b >>> 0}.${text.length}`;
}

function place(node: Node): string {
  const box = node.bounds;
  return box === undefined ? '' : `${node.role}@${box.x},${box.y},${box.width},${box.height}`;
}

type Pairs = [Node, Node][];

/** Takes out of both lists what has the same key, in order, and gives the pairs. */
function takeEqual(olds: Node[], news: Node[], keyOf: (node: Node) => string): Pairs {
  const byKey = new Map<string, Node[]>();
  for (const old of olds) {
    const of = keyOf(old);
    const list = byKey.get(of);
    if (list === undefined) {
      byKey.set(of, [old]);
    } else {
      list.push(old);
    }
  }
  const pairs: Pairs = [];
  const next = new Map<string, number>();
  const taken = new Set<Node>();
  for (const node of news) {
    const of = keyOf(node);
    const index = next.get(of) ?? 0;
    const old = of === '' ? undefined : byKey.get(of)?.[index];
    if (old !== undefined) {
      next.set(of, index + 1);
      pairs.push([old, node]);
      taken.add(old).add(node);
    }
  }
  keep(olds, taken);
  keep(news, taken);
  return pairs;
}

function keep(list: Node[], taken: ReadonlySet<Node>): void {
  const left = list.filter((node) => !taken.has(node));
  list.splice(0, list.length, ...left);
}

/** What is left of one role in the same number is taken for the same, in order: a text that changed. */
function takeByCount(olds: Node[], news: Node[]): Pairs {
  const count = (list: Node[], role: string) => list.filter((node) => node.role === role).length;
  const roles = new Set(news.map((node) => node.role));
  const equal = new Set([...roles].filter((role) => count(olds, role) === count(news, role)));
  // Another button in the place of one is another button, wherever it stands.
  const mayChange = (node: Node) => equal.has(node.role) && (!node.clickable || node.name === '');
  return takeEqual(olds, news, (node) => (mayChange(node) ? node.role : ''));
}

/** Numbers the nodes of `now` after those of `before`; what is new gets its number from `fresh`. */
export function number(before: readonly Node[], now: readonly Node[], fresh: () => number): void {
  const content = new Map([...contentKeys(before), ...contentKeys(now)]);
  const same = new Map<Node, Node>();
  const leftOld: Node[] = [];
  const leftNew: Node[] = [];
  const queue: [Node[], Node[]][] = [[[...before], [...now]]];
  const accept = (pairs: Pairs) => {
    for (const [old, node] of pairs) {
      same.set(node, old);
      queue.push([[...old.children], [...node.children]]);
    }
  };
  const drain = () => {
    for (let next = queue.pop(); next !== undefined; next = queue.pop()) {
      const [olds, news] = next;
      accept(takeEqual(olds, news, (node) => content.get(node) ?? ''));
      accept(takeEqual(olds, news, (node) => (node.name === '' ? '' : key(node))));
      accept(takeEqual(olds, news, place));
      accept(takeByCount(olds, news));
      leftOld.push(...olds);
      leftNew.push(...news);
    }
  };
  drain();
  // What moved to another parent; only what has a name of its own can be told.
  const gone = [...everyNode(leftOld)];
  const came = [...everyNode(leftNew)];
  const onlyGone = namedOnce(gone);
  const onlyCame = namedOnce(came);
  const movable = (node: Node) => {
    const of = key(node);
    return onlyGone.has(of) && onlyCame.has(of) ? of : '';
  };
  accept(takeEqual(gone, came, movable));
  drain();
  for (const node of everyNode(now)) {
    node.number = same.get(node)?.number ?? fresh();
  }
}

/** The keys of the nodes with a name that no other of them has. */
function namedOnce(nodes: readonly Node[]): Set<string> {
  const once = new Set<string>();
  const more = new Set<string>();
  for (const node of nodes) {
    const of = key(node);
    if (node.name === '' || once.has(of)) {
      more.add(of);
    }
    once.add(of);
  }
  for (const of of more) {
    once.delete(of);
  }
  return once;
}

/** How much is in both of two windows, 0 to 1; menus are the same in all of an application. */
export function likeness(a: readonly Node[], b: readonly Node[]): number {
  const count = new Map<string, number>();
  let total = 0;
  for (const node of contents(a)) {
    count.set(key(node), (count.get(key(node)) ?? 0) + 1);
    total++;
  }
  let common = 0;
  for (const node of contents(b)) {
    total++;
    const left = count.get(key(node)) ?? 0;
    if (left > 0) {
      count.set(key(node), left - 1);
      common += 2;
    }
  }
  return total === 0 ? 0 : common / total;
}

function contents(roots: readonly Node[]): Node[] {
  return [...everyNode(roots)].filter((node) => node.parent !== undefined && !node.inMenu);
}
