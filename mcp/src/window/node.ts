// The nodes of a window as the helper tells them, made into a tree of what is worth a line.

export interface Bounds {
  x: number;
  y: number;
  width: number;
  height: number;
}

export type Checked = boolean | 'mixed';

/** What the helper tells of an element. Texts are as the application has them: not made safe. */
export interface Element {
  helperId: string;
  role: string;
  rawRole: string;
  name: string;
  value: string;
  description: string;
  enabled: boolean;
  clickable: boolean;
  press: boolean;
  editable: boolean;
  secure: boolean;
  focused: boolean;
  selected: boolean | undefined;
  checked: Checked | undefined;
  expanded: boolean | undefined;
  bounds: Bounds | undefined;
  url: string | undefined;
  /** Of recognised text: there is no element behind it. */
  recognized: boolean;
}

export interface Node extends Element {
  /** Stays with the element from look to look; 0 until the look is numbered. */
  number: number;
  parent: Node | undefined;
  children: Node[];
  /** Whether it stands in a menu bar, whose menus are closed. */
  inMenu: boolean;
}

function isObject(value: unknown): value is Record<string, unknown> {
  return typeof value === 'object' && value !== null;
}

function text(value: unknown): string {
  return typeof value === 'string' ? value : '';
}

function optionalBoolean(value: unknown): boolean | undefined {
  return typeof value === 'boolean' ? value : undefined;
}

export function readBounds(value: unknown): Bounds | undefined {
  if (!isObject(value)) {
    return undefined;
  }
  const { x, y, width, height } = value;
  const all = [x, y, width, height];
  return all.every((part) => typeof part === 'number' && Number.isFinite(part))
    ? { x: x as number, y: y as number, width: width as number, height: height as number }
    : undefined;
}

type Redact = (text: string) => string;

/** A menu that is filled when it opens is told as the only item of itself. */
function pathOf(names: readonly string[]): string {
  return names.filter((name, index) => name !== names[index - 1]).join(' > ');
}

/** All at once and not put together from parts: a window has thousands of them. */
function nodeOf(wire: Record<string, unknown>, redact: Redact, parent: Node | undefined): Node {
  const checked = wire['checked'];
  const rawRole = text(wire['rawRole']);
  const path = wire['command'];
  // The menu bar's own name is a word of the helper's, and an item is known by where it stands.
  const name = Array.isArray(path)
    ? pathOf(path.map(text))
    : rawRole === 'AXMenuBar'
      ? ''
      : text(wire['name']);
  const helperId = text(wire['id']);
  return {
    helperId,
    role: text(wire['role']) || 'element',
    rawRole,
    name: redact(name),
    value: redact(text(wire['value'])),
    description: redact(text(wire['description'])),
    enabled: wire['enabled'] !== false,
    clickable: wire['clickable'] === true,
    press: wire['press'] === true,
    editable: wire['editable'] === true,
    secure: wire['secure'] === true,
    focused: wire['focused'] === true,
    selected: optionalBoolean(wire['selected']),
    checked: checked === 'mixed' ? checked : optionalBoolean(checked),
    expanded: optionalBoolean(wire['expanded']),
    bounds: readBounds(wire['bounds']),
    url: typeof wire['url'] === 'string' ? wire['url'] : undefined,
    recognized: typeof wire['confidence'] === 'number',
    number: 0,
    parent,
    children: [],
    inMenu: parent?.inMenu === true || helperId.endsWith(':menubar'),
  };
}

// What holds others and says something by being there, named or not.
const structure = new Set(
  'window dialog sheet toolbar menubar menu table outline list tabgroup webarea row'.split(' '),
);

// Clickable by what they are and not by what they do: without a word in them there is nothing to choose.
const passive = new Set(['cell', 'row', 'text', 'image']);

/** Whether there is anything to read of it or to do with it, by itself. */
export function saysSomething(node: Node): boolean {
  return (
    node.name !== '' ||
    node.value !== '' ||
    (node.clickable && (node.press || !passive.has(node.role))) ||
    node.editable ||
    node.secure ||
    node.checked !== undefined ||
    node.expanded !== undefined
  );
}

function isStructure(node: Node): boolean {
  return structure.has(node.role) && node.children.length > 0;
}

const repeating = new Set(['text', 'image', 'group', 'menu']);

/** A label inside a button that says the same as the button; the closed menu of a menu item. */
function repeatsParent(node: Node, parent: Node | undefined): boolean {
  return (
    parent !== undefined &&
    node.children.length === 0 &&
    repeating.has(node.role) &&
    !node.editable &&
    !node.focused &&
    !node.press &&
    (node.name === parent.name || node.name === '') &&
    (node.value === '' || node.value === parent.name || node.value === parent.value) &&
    parent.name !== ''
  );
}

/** What says nothing gives its place to its children. */
function compacted(node: Node, parent: Node | undefined): Node[] {
  const keeps = parent === undefined || node.focused || saysSomething(node) || isStructure(node);
  const children = node.children.flatMap((child) => compacted(child, keeps ? node : parent));
  if (!keeps) {
    return children;
  }
  node.children = children.filter((child) => !repeatsParent(child, node));
  // Of several that are said to be focused, the innermost is.
  const isOuter = node.focused && !saysSomething(node) && !isStructure(node);
  if (parent !== undefined && isOuter && children.some((child) => child.focused)) {
    return node.children;
  }
  for (const child of node.children) {
    child.parent = node;
  }
  return [node];
}

// Deeper than any window; beyond it the tree is made flat, as calls nest only so far.
const deepest = 200;

function linked(wires: readonly unknown[], redact: Redact): Node[] {
  const byId = new Map<string, { node: Node; depth: number }>();
  const roots: Node[] = [];
  for (const wire of wires) {
    if (!isObject(wire)) {
      continue;
    }
    const above = byId.get(text(wire['parentId']));
    const isTooDeep = above !== undefined && above.depth >= deepest;
    const parent = isTooDeep ? above.node.parent : above?.node;
    const node = nodeOf(wire, redact, parent);
    // An id that was there already would make a loop of what is a tree.
    if (node.helperId === '' || byId.has(node.helperId)) {
      continue;
    }
    const depth = above === undefined ? 0 : isTooDeep ? above.depth : above.depth + 1;
    byId.set(node.helperId, { node, depth });
    (parent?.children ?? roots).push(node);
  }
  return roots;
}

/** The tree of a look; its roots are the window, the menu bar, and what has no parent that is listed. */
export function readTree(wires: readonly unknown[], redact: Redact = (it) => it): Node[] {
  const roots = linked(wires, redact).flatMap((root) => compacted(root, undefined));
  for (const root of roots) {
    root.parent = undefined;
  }
  return roots;
}

/** Every node below `roots` and themselves, parents first. */
export function* everyNode(roots: readonly Node[]): Generator<Node> {
  // A tree can be deeper than calls may nest.
  const stack = [...roots].reverse();
  for (let node = stack.pop(); node !== undefined; node = stack.pop()) {
    yield node;
    for (let index = node.children.length - 1; index >= 0; index--) {
      const child = node.children[index];
      if (child !== undefined) {
        stack.push(child);
      }
    }
  }
}
