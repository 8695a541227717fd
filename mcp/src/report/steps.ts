// A recording as steps for a reader: what was asked, what came of it, what changed.

import type { Exchange, Happening } from '../recorder/exchanges.js';
import { isRecord } from '../recorder/recording.js';
import { changesBetween, type Change } from './changes.js';
import {
  describeNode,
  observationIn,
  type Node,
  type Observation,
  type Picture,
} from './observation.js';
import { proofsOf, sentBy } from './proofs.js';

/** `done`; `refused`: nothing was sent, or what `sent` says; `unknown`: no answer, or no sense. */
export type Outcome = 'done' | 'refused' | 'unknown' | 'notice';

export interface Step {
  title: string;
  outcome: Outcome;
  /** Milliseconds since the recording began. */
  at: number;
  /** Milliseconds; undefined without an answer. */
  took: number | undefined;
  /** The method and its arguments as they were asked; undefined for what nobody asked. */
  asked: { method: string; args: Record<string, unknown> } | undefined;
  /** The node that was acted on. */
  node: Node | undefined;
  proven: string[];
  refusal: { code: string; message: string } | undefined;
  sent: string | undefined;
  /** Undefined when nobody looked again before the next action. */
  changes: Change[] | undefined;
  /** What was asked right after it to see it through, and what else there is to say. */
  remarks: string[];
  /** What was seen, for a look. */
  seen: Observation | undefined;
  picture: { picture: Picture; takenAt: number; earlier: boolean } | undefined;
}

const actions = new Set(['click', 'showMenu', 'hover', 'input']);
/** What belongs to the step before it. */
const followUps = new Set(['settle', 'geometry']);

export class StepBuilder {
  readonly steps: Step[] = [];
  startedAt: string | undefined;
  damaged = 0;

  private last: Observation | undefined;
  /** Every node that was ever seen: a refused one is often of an earlier look. */
  private readonly known = new Map<string, Node>();
  private lastPicture: { picture: Picture; takenAt: number } | undefined;
  /** The actions since the last look, whose changes the next look shows. */
  private unseen: Step[] = [];

  add(happening: Happening): void {
    switch (happening.kind) {
      case 'recording':
        this.startedAt = happening.at;
        break;
      case 'damage':
        this.damaged += 1;
        break;
      case 'started':
        this.last = undefined;
        this.unseen = [];
        this.note(`helper started, process ${happening.pid}`, happening.ms, [
          happening.command.join(' '),
        ]);
        break;
      case 'ended': {
        const { code, signal } = happening;
        const how = signal === null ? `status ${String(code)}` : `of ${signal}`;
        const step = this.note(`helper ended, ${how}`, happening.ms, []);
        step.outcome = code === 0 ? 'notice' : 'unknown';
        break;
      }
      case 'exchange':
        this.addExchange(happening);
    }
  }

  private note(title: string, at: number, remarks: string[]): Step {
    const step: Step = { ...emptyStep, title, at, remarks };
    this.steps.push(step);
    return step;
  }

  private addExchange(exchange: Exchange): void {
    const asked = exchange.request?.['method'];
    const method = typeof asked === 'string' ? asked : 'no request';
    const args = exchange.request?.['args'];
    const previous = this.steps.at(-1);
    if (
      followUps.has(method) &&
      previous?.asked !== undefined &&
      isRecord(exchange.answer?.['result'])
    ) {
      previous.remarks.push(followUp(method, exchange.answer['result'], tookOf(exchange)));
      return;
    }
    const step: Step = {
      ...emptyStep,
      ...outcomeOf(exchange),
      at: exchange.askedAt,
      took: tookOf(exchange),
      asked: { method, args: isRecord(args) ? args : {} },
      title: titleOf(method, isRecord(args) ? args : {}),
      remarks: [],
    };
    this.steps.push(step);
    if (actions.has(method)) {
      this.addAction(step, exchange.answer?.['result']);
    } else if (method === 'observe') {
      this.addLook(step, exchange.answer?.['result']);
    }
  }

  private addAction(step: Step, result: unknown): void {
    const { method, args } = step.asked ?? { method: '', args: {} };
    step.node = this.last?.nodes.find((node) => node.id === args['nodeId']);
    const known = step.node ?? this.known.get(String(args['nodeId']));
    if (known !== undefined) {
      const earlier = step.node === undefined ? ' of an earlier look' : '';
      step.title = `${verbOf(method, args)} ${describeNode(known)}${earlier}`;
    }
    if (isRecord(result)) {
      step.proven = proofsOf(method, args['kind'], result);
      step.sent = sentBy(method, args, result);
    }
    if (this.lastPicture !== undefined) {
      step.picture = { ...this.lastPicture, earlier: this.last?.picture === undefined };
    }
    if (step.sent !== nothing) {
      this.unseen.push(step);
    }
  }

  private addLook(step: Step, result: unknown): void {
    const seen = observationIn(result);
    if (seen === undefined) {
      return;
    }
    step.seen = seen;
    step.title = `look at “${seen.title}”`;
    if (seen.picture !== undefined) {
      this.lastPicture = { picture: seen.picture, takenAt: step.at };
      step.picture = { ...this.lastPicture, earlier: false };
    }
    if (this.last !== undefined) {
      const changes = changesBetween(this.last, seen);
      step.changes = changes;
      for (const action of this.unseen) {
        action.changes = changes;
        if (this.unseen.length > 1) {
          action.remarks.push(`What changed is of ${this.unseen.length} actions together.`);
        }
      }
    }
    this.unseen = [];
    this.last = seen;
    seen.nodes.forEach((node) => this.known.set(node.id, node));
  }
}

const nothing = 'nothing';

const emptyStep = {
  outcome: 'notice' as Outcome,
  took: undefined,
  asked: undefined,
  node: undefined,
  proven: [],
  refusal: undefined,
  sent: undefined,
  changes: undefined,
  seen: undefined,
  picture: undefined,
};

function outcomeOf({ request, answer, nonsense }: Exchange): Partial<Step> {
  const error = answer?.['error'];
  if (isRecord(error)) {
    const refusal = { code: String(error['code']), message: String(error['message']) };
    const sent = error['sent'];
    const isAction = actions.has(String(request?.['method']));
    const part = typeof sent === 'string' && sent !== '' ? `only “${sent}”` : nothing;
    return { outcome: 'refused', refusal, sent: isAction ? part : undefined };
  }
  if (isRecord(answer?.['result'])) {
    return { outcome: 'done' };
  }
  const what = nonsense === undefined ? 'no answer came' : `no answer but “${nonsense}”`;
  return { outcome: 'unknown', sent: `unknown: ${what}` };
}

function tookOf({ askedAt, answeredAt }: Exchange): number | undefined {
  return answeredAt === undefined ? undefined : answeredAt - askedAt;
}

function titleOf(method: string, args: Record<string, unknown>): string {
  switch (method) {
    case 'connect':
      return `connect to ${String(args['bundleId'])}`;
    case 'observe':
      return 'look';
    case 'listTargets':
      return 'list applications';
    case 'preflight':
      return 'check the grants';
    default:
      return actions.has(method) ? `${verbOf(method, args)} a node that nobody knows` : method;
  }
}

function verbOf(method: string, args: Record<string, unknown>): string {
  if (method === 'showMenu') {
    return 'open the menu of';
  }
  if (method !== 'input') {
    return method === 'click' && Number(args['count'] ?? 1) > 1 ? 'double-click' : method;
  }
  if (args['kind'] === 'key') {
    const modifiers: unknown[] = Array.isArray(args['modifiers']) ? args['modifiers'] : [];
    return `press ${[...modifiers, args['key']].map(String).join('+')} on`;
  }
  return args['kind'] === 'type' ? 'type into' : 'scroll';
}

function followUp(method: string, result: Record<string, unknown>, took?: number): string {
  const time = took === undefined ? '' : ` after ${Math.round(took)} ms`;
  if (method === 'geometry') {
    return `window ${String(result['visibility'])}${time}`;
  }
  const heard = Array.isArray(result['heard']) ? result['heard'].map(String).join(', ') : '';
  const quiet = result['quiet'] === true ? 'quiet' : 'not quiet';
  return `${quiet}${time}; heard: ${heard === '' ? 'nothing' : heard}`;
}
