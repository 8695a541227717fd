// The desktop as the tools use it: one helper, the applications that were opened, the last look.

import type { AppRules, App } from '../access/apps.js';
import type { Secrets } from '../access/secrets.js';
import { HelperRefusal } from '../helper/failures.js';
import type { HelperResult } from '../helper/client.js';
import type { RawPicture } from '../picture/picture.js';
import { quoted } from '../text/safe.js';
import { readBounds } from '../window/node.js';
import {
  newTarget,
  Observations,
  observationOf,
  type Observation,
  type Target,
} from '../window/observation.js';
import { Handles } from './handles.js';
import { freshLetters, HelperLink, type LinkOptions } from './link.js';
import { Queue, Refused } from './queue.js';

export interface InstalledApp extends App {
  running: boolean;
}

export interface LookOptions {
  picture?: boolean;
  /** Read the picture's text as well, although the window has text of its own. */
  ocr?: boolean;
}

export interface Look {
  observation: Observation;
  picture: RawPicture | undefined;
  /** What the reader has to know of it: no picture, text missing. */
  notes: string[];
}

// Launching takes up to 10 s, finding the window of a site 8 s more.
const connectMs = 20_000;
const readTextMs = 20_000;
const mostNodes = 5000;
// How long a new window may take to fill, and how many nodes it has before.
const filling = { quietMs: 300, timeoutMs: 3000 };
const emptyWindow = 1;
// Enough for every task of a desktop; the tenth application is opened again when it is needed.
const mostTargets = 12;

const silentWindow =
  'the application tells nothing of what is in this window: it may still be filling (wait_for); ' +
  'else observe with its picture, whose text is read; ' +
  'a browser that was started before accessibility was switched on has to be started again';

/** Without these a look still has its lines. */
const pictureCodes = new Set(
  (
    'screen_capture_denied screen_capture_stale window_covered window_not_visible ' +
    'window_capture_failed image_encoding_failed'
  ).split(' '),
);

function isObject(value: unknown): value is Record<string, unknown> {
  return typeof value === 'object' && value !== null;
}

function text(value: unknown): string {
  return typeof value === 'string' ? value : '';
}

function readPicture(value: unknown): RawPicture | undefined {
  if (!isObject(value)) {
    return undefined;
  }
  const { base64, width, height, mimeType } = value;
  const bounds = readBounds(value['bounds']);
  return typeof base64 === 'string' &&
    typeof width === 'number' &&
    typeof height === 'number' &&
    width > 0 &&
    height > 0 &&
    bounds !== undefined
    ? { base64, width, height, bounds, mimeType: text(mimeType) || 'image/png' }
    : undefined;
}

/** What an answer to "observe" says. */
interface Seen {
  title: string;
  wires: readonly unknown[];
  truncated: boolean;
  picture: RawPicture | undefined;
  /** Something of the window, its own title and the menus apart, says anything. */
  hasText: boolean;
}

function readSeen(result: HelperResult): Seen {
  const snapshot = isObject(result['snapshot']) ? result['snapshot'] : {};
  const wires = Array.isArray(snapshot['nodes']) ? (snapshot['nodes'] as unknown[]) : [];
  const says = (wire: unknown) =>
    isObject(wire) &&
    typeof wire['parentId'] === 'string' &&
    !wire['parentId'].endsWith(':menubar') &&
    (text(wire['name']) !== '' || text(wire['value']) !== '');
  return {
    title: text(snapshot['title']),
    wires,
    truncated: snapshot['truncated'] === true,
    picture: readPicture(result['image']),
    hasText: wires.some(says),
  };
}

/** Whether there is nothing but the window: a new one is filled a moment after it has come. */
export function isEmpty(look: Look): boolean {
  return look.observation.byNumber.size <= emptyWindow;
}

/** Whether the application fell silent before it told anything worth a look. */
function isRest(seen: Seen, target: Target): boolean {
  const usual = target.windows[0]?.byNumber.size ?? 0;
  return seen.truncated && seen.wires.length <= Math.max(emptyWindow, usual / 2);
}

export class Desk {
  readonly queue = new Queue();
  readonly targets = new Map<string, Target>();
  readonly observations = new Observations();
  readonly handles: Handles;
  readonly link: HelperLink;
  /** What the helper is connected to. */
  private bound: Target | undefined;
  private hostKnown = false;

  constructor(
    options: LinkOptions,
    readonly apps: AppRules,
    readonly secrets: Secrets,
    /** Nothing may be started, opened or brought forward. */
    readonly readOnly: boolean,
    readonly now: () => number = () => performance.now(),
  ) {
    this.handles = new Handles(this.targets, this.observations, now);
    this.link = new HelperLink(options, () => {
      this.bound = undefined;
      this.observations.endAll('the helper that it belongs to has ended');
    });
  }

  /** Every application that could be opened, rules aside. */
  async installed(): Promise<InstalledApp[]> {
    if (!this.hostKnown) {
      await this.learnHost();
    }
    const { targets } = await this.link.ask('listTargets');
    const list = Array.isArray(targets) ? (targets as unknown[]) : [];
    return list.filter(isObject).map((one) => ({
      bundleId: text(one['bundleId']),
      name: text(one['name']),
      running: one['running'] === true,
    }));
  }

  private async learnHost(): Promise<void> {
    const { known, host } = await this.link.ask('host');
    if (known === true && isObject(host) && typeof host['bundleId'] === 'string') {
      this.apps.setHost({ bundleId: host['bundleId'], name: text(host['name']) });
    }
    this.hostKnown = true;
  }

  /** The one application that is meant by an identifier, a name or a part of it. */
  async resolve(wanted: string): Promise<InstalledApp> {
    const all = (await this.installed()).filter((app) => app.bundleId !== '');
    const word = wanted.trim().toLowerCase();
    const by = (test: (app: InstalledApp) => boolean) => all.filter(test);
    const steps = [
      by((app) => app.bundleId === wanted.trim()),
      by((app) => app.bundleId.toLowerCase() === word),
      by((app) => app.name.toLowerCase() === word),
      by((app) => `${app.name} ${app.bundleId}`.toLowerCase().includes(word)),
    ];
    const found = steps.find((list) => list.length > 0) ?? [];
    const [app] = found;
    if (app === undefined) {
      // It may be known to the system all the same, and then says better what is wrong.
      return { bundleId: wanted.trim(), name: wanted.trim(), running: false };
    }
    const allowed = found.length === 1 ? found : found.filter((one) => !this.apps.refusal(one));
    if (allowed.length > 1) {
      const names = allowed.slice(0, 12).map((one) => `${one.bundleId} ${quoted(one.name, 40)}`);
      throw new Refused(
        'ambiguous_app',
        `${quoted(wanted, 60)} may be ${allowed.length} applications: ${names.join(', ')}.`,
        'Call open_target with one of these identifiers.',
      );
    }
    return allowed[0] ?? app;
  }

  /** Connects to an application, started and brought forward unless that is not allowed. */
  async open(app: App, site: string | undefined): Promise<{ target: Target; info: HelperResult }> {
    const refusal = this.apps.refusal(app);
    if (refusal !== undefined) {
      throw new Refused(
        'app_denied',
        `${quoted(app.name, 60)} may not be used: ${refusal}.`,
        'Choose another application (list_apps); only the user can change this.',
      );
    }
    const info = await this.connect(app.bundleId, site, !this.readOnly);
    const resolved = { bundleId: app.bundleId, name: text(info['name']) || app.name };
    const target = this.targetOf(resolved, site);
    this.bound = target;
    return { target, info };
  }

  private async connect(
    bundleId: string,
    site: string | undefined,
    launch: boolean,
  ): Promise<HelperResult> {
    this.bound = undefined;
    this.observations.endAll('the application was opened again');
    const args = {
      bundleId,
      ...(site === undefined ? {} : { site }),
      ...(launch ? {} : { launch }),
    };
    return this.link.ask('connect', args, connectMs);
  }

  private targetOf(app: App, site: string | undefined): Target {
    const known = [...this.targets.values()].find(
      (one) => one.bundleId === app.bundleId && one.site === site,
    );
    if (known !== undefined) {
      known.name = app.name;
      return known;
    }
    const letters = freshLetters(this.targets);
    const target = newTarget(letters, app, site);
    this.targets.set(letters, target);
    for (const oldest of this.targets.keys()) {
      if (this.targets.size <= mostTargets) {
        break;
      }
      this.targets.delete(oldest);
    }
    return target;
  }

  /** Whether the helper is connected to the target now. */
  isBoundTo(target: Target): boolean {
    return this.bound === target;
  }

  /** The first look after opening: a window that just came up is given time to fill. */
  async firstLook(target: Target, options: LookOptions, wasRunning: boolean): Promise<Look> {
    if (!wasRunning) {
      await this.link.ask('settle', filling);
    }
    const look = await this.look(target, options);
    return isEmpty(look) ? this.laterLook(target, options) : look;
  }

  /** A look a moment later, at a window that lacks what was expected of it. */
  async laterLook(target: Target, options: LookOptions = {}): Promise<Look> {
    for (let tries = 1; ; tries++) {
      await this.link.ask('settle', filling);
      const look = await this.look(target, options);
      if (!isEmpty(look) || tries === 3) {
        return look;
      }
    }
  }

  /** Looks at the target's window; whatever was looked at before cannot be acted on any more. */
  async look(target: Target, options: LookOptions = {}): Promise<Look> {
    if (this.bound !== target) {
      // Another application was used meanwhile, or the helper was replaced.
      await this.connect(target.bundleId, target.site, false);
      this.bound = target;
    }
    const notes: string[] = [];
    let at = this.now();
    let seen = readSeen(await this.observe(options, notes));
    for (let again = 0; again < 2 && isRest(seen, target); again++) {
      await this.link.ask('settle', {});
      at = this.now();
      seen = readSeen(await this.observe(options, notes));
    }
    if (options.ocr === undefined && !seen.hasText) {
      if (options.picture === true) {
        at = this.now();
        seen = await this.withText(seen, options, notes);
      }
      if (!seen.truncated) {
        notes.push(silentWindow);
      }
    }
    const observation = observationOf(target, {
      at,
      title: this.secrets.redact(seen.title),
      wires: seen.wires,
      truncated: seen.truncated,
      redact: (it) => this.secrets.redact(it),
    });
    this.observations.endAll(`the later look ${observation.tag} replaced it`);
    this.observations.add(observation);
    return { observation, picture: seen.picture, notes };
  }

  /** A window that says nothing by itself is read from its picture. */
  private async withText(seen: Seen, options: LookOptions, notes: string[]): Promise<Seen> {
    try {
      return readSeen(await this.observe({ ...options, ocr: true }, notes));
    } catch (error) {
      if (!(error instanceof HelperRefusal)) {
        throw error;
      }
      notes.push(`text in the picture could not be read: ${error.message}`);
      return seen;
    }
  }

  /** Without the picture when there is none to be had; once more when the window moved meanwhile. */
  private async observe(options: LookOptions, notes: string[]): Promise<HelperResult> {
    const wanted = {
      image: options.picture === true,
      ocr: options.ocr === true,
      ...(options.ocr === true ? { forceOcr: true } : {}),
      states: true,
      compact: true,
      maxNodes: mostNodes,
    };
    const ask = (args: Record<string, unknown>) =>
      this.link.ask('observe', args, options.ocr === true ? readTextMs : 0);
    try {
      return await ask(wanted);
    } catch (error) {
      if (!(error instanceof HelperRefusal)) {
        throw error;
      }
      if (error.code === 'stale_snapshot') {
        return ask(wanted);
      }
      if (!wanted.image || !pictureCodes.has(error.code)) {
        throw error;
      }
      notes.push(`no picture: ${error.message}`);
      return ask({ ...wanted, image: false, ocr: false, forceOcr: false });
    }
  }
}
