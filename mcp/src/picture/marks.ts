// Numbers drawn beside what they name: a frame around each node and its number outside of it.

import type { Bounds } from '../window/node.js';

export interface Mark {
  number: number;
  /** In screen points. */
  bounds: Bounds;
}

export interface Canvas {
  width: number;
  height: number;
  /** Pixels of a screen point. */
  perPoint: number;
  /** The screen point of the top left pixel. */
  origin: { x: number; y: number };
}

// Drawn as squares, so that no font is needed: five columns, seven rows, a bit a square.
const digits: readonly (readonly number[])[] = [
  [14, 17, 19, 21, 25, 17, 14],
  [4, 12, 4, 4, 4, 4, 14],
  [14, 17, 1, 6, 8, 16, 31],
  [30, 1, 1, 14, 1, 1, 30],
  [2, 6, 10, 18, 31, 2, 2],
  [31, 16, 30, 1, 1, 17, 14],
  [6, 8, 16, 30, 17, 17, 14],
  [31, 1, 2, 4, 8, 8, 8],
  [14, 17, 17, 14, 17, 17, 14],
  [14, 17, 17, 15, 1, 2, 12],
];
const dot = 1.6;
const padding = 2;
const advance = 6 * dot;
const labelHeight = 7 * dot + 2 * padding;
// More would hide the window behind its numbers.
const mostMarks = 300;

interface Box {
  x: number;
  y: number;
  width: number;
  height: number;
}

function overlap(a: Box, b: Box): number {
  const width = Math.min(a.x + a.width, b.x + b.width) - Math.max(a.x, b.x);
  const height = Math.min(a.y + a.height, b.y + b.height) - Math.max(a.y, b.y);
  return width > 0 && height > 0 ? width * height : 0;
}

/** Places outside of the box, the nicest first. */
function places(box: Box, width: number): Box[] {
  const right = box.x + box.width;
  const bottom = box.y + box.height;
  const corners: [number, number][] = [
    [box.x - width, box.y],
    [box.x, box.y - labelHeight],
    [right, box.y],
    [box.x, bottom],
    [right - width, box.y - labelHeight],
    [box.x - width, bottom - labelHeight],
    [right, bottom - labelHeight],
    [right - width, bottom],
  ];
  return corners.map(([x, y]) => ({ x, y, width, height: labelHeight }));
}

function isInside(box: Box, canvas: Canvas): boolean {
  return (
    box.x >= 0 &&
    box.y >= 0 &&
    box.x + box.width <= canvas.width &&
    box.y + box.height <= canvas.height
  );
}

/** Where the label goes; undefined where it would cover what it names or another label. */
function placed(own: Box, width: number, others: Box[], labels: Box[], canvas: Canvas) {
  let best: Box | undefined;
  let least = Infinity;
  for (const place of places(own, width)) {
    if (!isInside(place, canvas) || labels.some((label) => overlap(label, place) > 0)) {
      continue;
    }
    const covered = others.reduce(
      // What holds the node is around it, and not covered by a number beside it.
      (total, other) => total + (overlap(other, own) > 0 ? 0 : overlap(other, place)),
      0,
    );
    if (covered < least) {
      best = place;
      least = covered;
    }
  }
  return best;
}

function glyphs(number: number, box: Box): string {
  let path = '';
  Array.from(String(number)).forEach((character, index) => {
    (digits[Number(character)] ?? []).forEach((row, y) => {
      for (let x = 0; x < 5; x++) {
        if ((row & (16 >> x)) !== 0) {
          const left = box.x + padding + index * advance + x * dot;
          path += `M${left.toFixed(1)} ${(box.y + padding + y * dot).toFixed(1)}h${dot}v${dot}h-${dot}z`;
        }
      }
    });
  });
  return `<path d="${path}" fill="#000"/>`;
}

function rectangle(box: Box, style: string): string {
  const at = `x="${box.x.toFixed(1)}" y="${box.y.toFixed(1)}"`;
  return `<rect ${at} width="${box.width.toFixed(1)}" height="${box.height.toFixed(1)}" ${style}/>`;
}

/** The marks as a picture to be laid over the window's. */
export function marksFor(marks: readonly Mark[], canvas: Canvas): string {
  const boxes = marks.slice(0, mostMarks).map(({ number, bounds }) => ({
    number,
    box: {
      x: (bounds.x - canvas.origin.x) * canvas.perPoint,
      y: (bounds.y - canvas.origin.y) * canvas.perPoint,
      width: bounds.width * canvas.perPoint,
      height: bounds.height * canvas.perPoint,
    },
  }));
  const labels: Box[] = [];
  const parts: string[] = [];
  for (const { number, box } of boxes) {
    const others = boxes.filter((other) => other.number !== number).map((other) => other.box);
    const width = String(number).length * advance - dot + 2 * padding;
    const label = placed(box, width, others, labels, canvas);
    if (label === undefined) {
      continue;
    }
    labels.push(label);
    parts.push(rectangle(box, 'fill="none" stroke="#d00000" stroke-width="1"'));
    parts.push(rectangle(label, 'fill="#ffe600" stroke="#d00000" stroke-width="0.8"'));
    parts.push(glyphs(number, label));
  }
  const size = `width="${canvas.width}" height="${canvas.height}"`;
  return `<svg xmlns="http://www.w3.org/2000/svg" ${size}>${parts.join('')}</svg>`;
}
