// What an observation of the helper says, read leniently: a recording may hold anything.

import { z } from 'zod';
import { bounded } from './html.js';

const text = z.string().optional().catch(undefined);
const flag = z.boolean().optional().catch(undefined);

const rectSchema = z.object({
  x: z.number(),
  y: z.number(),
  width: z.number(),
  height: z.number(),
});

const nodeSchema = z.object({
  id: z.string(),
  parentId: z.string().nullish().catch(undefined),
  role: z.string().catch('element'),
  rawRole: text,
  name: z.string().catch(''),
  value: text,
  enabled: flag,
  selected: flag,
  focused: flag,
  checked: z.union([z.boolean(), z.string()]).optional().catch(undefined),
  expanded: flag,
  secure: flag,
  bounds: rectSchema.optional().catch(undefined),
});

const imageSchema = z.object({
  file: z.string(),
  bytes: z.number(),
  width: z.number().positive(),
  height: z.number().positive(),
  bounds: rectSchema,
});

const observedSchema = z.object({
  snapshot: z.object({
    title: z.string().catch(''),
    nodes: z.array(z.unknown()),
    truncated: flag,
    durationMs: z.number().optional().catch(undefined),
  }),
  image: imageSchema.optional().catch(undefined),
  omissions: z.array(z.string()).catch([]),
});

/** In screen points, origin at the top left of the main display. */
export type Rect = z.infer<typeof rectSchema>;
export type Node = z.infer<typeof nodeSchema>;
/** A picture in the recording: its file, its pixels, and the place on the screen that it shows. */
export type Picture = z.infer<typeof imageSchema>;

export interface Observation {
  title: string;
  nodes: Node[];
  truncated: boolean;
  durationMs: number | undefined;
  omissions: string[];
  picture: Picture | undefined;
}

/** The observation in an answer's result; undefined when it holds none. */
export function observationIn(result: unknown): Observation | undefined {
  const { data } = observedSchema.safeParse(result);
  if (data === undefined) {
    return undefined;
  }
  return {
    title: data.snapshot.title,
    nodes: data.snapshot.nodes.flatMap((node) => nodeSchema.safeParse(node).data ?? []),
    truncated: data.snapshot.truncated === true,
    durationMs: data.snapshot.durationMs,
    omissions: data.omissions,
    picture: data.image,
  };
}

/** "button “Save”". */
export function describeNode(node: Node): string {
  return node.name === '' ? node.role : `${node.role} “${bounded(node.name, 60)}”`;
}

/** A line of the outline: the node, its value and the states that are out of the ordinary. */
export function outlineOf(node: Node): string {
  const value = node.value !== undefined && node.value !== node.name && node.value !== '';
  return [
    describeNode(node),
    ...(value ? [`= “${bounded(node.value ?? '', 60)}”`] : []),
    ...statesOf(node),
  ].join(' ');
}

export function statesOf(node: Node): string[] {
  return [
    ...(node.enabled === false ? ['disabled'] : []),
    ...(node.focused === true ? ['focused'] : []),
    ...(node.selected === true ? ['selected'] : []),
    ...(node.expanded === undefined ? [] : [node.expanded ? 'expanded' : 'collapsed']),
    ...(node.checked === undefined ? [] : [`checked: ${String(node.checked)}`]),
    ...(node.secure === true ? ['password'] : []),
  ];
}

/** How deep each node lies, in the order of the nodes. */
export function depthsOf(nodes: Node[]): number[] {
  const depths = new Map<string, number>();
  return nodes.map((node) => {
    const depth = typeof node.parentId === 'string' ? (depths.get(node.parentId) ?? -1) + 1 : 0;
    depths.set(node.id, depth);
    return depth;
  });
}
