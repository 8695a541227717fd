// Trees of windows as a helper could tell them, at random but the same for the same seed.

export type Random = () => number;

/** mulberry32: small, fast, and good enough to look everywhere. */
export function randomFrom(seed: number): Random {
  let state = seed | 0;
  return () => {
    state = (state + 0x6d2b79f5) | 0;
    let mixed = Math.imul(state ^ (state >>> 15), 1 | state);
    mixed = (mixed + Math.imul(mixed ^ (mixed >>> 7), 61 | mixed)) ^ mixed;
    return ((mixed ^ (mixed >>> 14)) >>> 0) / 4294967296;
  };
}

const roles = 'window group button text textbox row cell list dialog menuitem link checkbox'.split(
  ' ',
);
const pieces = [
  'Save',
  'ü',
  '한글',
  '"',
  '\\',
  '\n',
  '\u202e',
  '\ud800',
  '😀',
  ' ',
  'x'.repeat(60),
];

function below(random: Random, most: number): number {
  return Math.floor(random() * most);
}

function text(random: Random): string {
  const count = below(random, 12) - 4;
  return Array.from(
    { length: Math.max(0, count) },
    () => pieces[below(random, pieces.length)],
  ).join('');
}

/** Up to `most` nodes of a window, parents first. */
export function randomWires(random: Random, most: number): Record<string, unknown>[] {
  const count = 1 + below(random, most);
  const deep = random();
  return Array.from({ length: count }, (_, index) => {
    // Near the last one for deep trees, anywhere for flat ones.
    const parent = random() < deep ? index - 1 : below(random, Math.max(1, index));
    const menu = random() < 0.05;
    return {
      id: menu && index > 0 ? `s:${index}:menubar` : `s:${index}`,
      parentId: index === 0 || random() < 0.02 ? null : `s:${Math.max(0, parent)}`,
      role: roles[below(random, roles.length)],
      rawRole: 'AXAnything',
      name: text(random),
      value: text(random),
      enabled: random() < 0.9,
      clickable: random() < 0.4,
      editable: random() < 0.1,
      focused: random() < 0.02,
      ...(random() < 0.3 ? { checked: random() < 0.5 } : {}),
      ...(random() < 0.8
        ? { bounds: { x: below(random, 2000), y: below(random, 2000), width: 50, height: 20 } }
        : {}),
    };
  });
}
