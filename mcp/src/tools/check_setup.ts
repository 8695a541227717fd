import { spawn } from 'node:child_process';

import * as z from 'zod';

import { HelperLost, HelperRefusal } from '../helper/failures.js';
import { Refused } from '../desk/queue.js';
import { plain } from '../text/safe.js';
import { tool, type House } from './tool.js';

const versionMs = 2000;

/** What `tarqo-ax --version` prints; undefined when it prints nothing in time. */
function versionOf(command: readonly string[], environment: NodeJS.ProcessEnv) {
  return new Promise<string | undefined>((resolve) => {
    const [program = ''] = command;
    const child = spawn(program, ['--version'], {
      env: environment,
      stdio: ['ignore', 'pipe', 'ignore'],
      timeout: versionMs,
      killSignal: 'SIGKILL',
    });
    let said = '';
    child.stdout.on('data', (chunk: Buffer) => {
      said = (said + chunk.toString('utf8')).slice(0, 200);
    });
    child.on('error', () => {
      resolve(undefined);
    });
    child.on('close', (code) => {
      resolve(code === 0 && said !== '' ? plain(said.trim(), 60) : undefined);
    });
  });
}

/** The helper's answer to a question, or its refusal. */
async function asked(house: House, method: string) {
  try {
    return await house.desk.link.ask(method);
  } catch (error) {
    if (error instanceof HelperRefusal) {
      return error;
    }
    throw error;
  }
}

interface Grants {
  lines: string[];
  next: string[];
}

async function grants(house: House): Promise<Grants> {
  const lines: string[] = [];
  const next: string[] = [];
  const preflight = await asked(house, 'preflight');
  if (!(preflight instanceof HelperRefusal)) {
    lines.push('accessibility: granted', 'reading pixels: granted');
  } else {
    const isCapture = preflight.code.startsWith('screen_capture');
    lines.push(`accessibility: ${isCapture ? 'granted' : 'MISSING'}`);
    lines.push(`reading pixels: ${isCapture ? 'MISSING' : 'not known before accessibility'}`);
    next.push(`tell the user: ${plain(preflight.message, 600)}`);
    if (isCapture) {
      next.push('until then work without pictures: picture "none"');
    }
  }
  // Without a target the gate tells of the screen first, and of the missing target last.
  const gate = await asked(house, 'geometry');
  const locked = gate instanceof HelperRefusal && gate.code === 'session_locked';
  lines.push(`screen: ${locked ? 'LOCKED' : 'not locked'}`);
  if (locked) {
    next.push('tell the user to unlock the screen');
  }
  return { lines, next };
}

async function hostLine(house: House): Promise<string> {
  const host = await asked(house, 'host');
  const found = host instanceof HelperRefusal ? undefined : host['host'];
  const { name, bundleId, pid } = (found ?? {}) as Record<string, unknown>;
  if (host instanceof HelperRefusal || host['known'] !== true || typeof name !== 'string') {
    return 'grants go to: nobody is known to have launched this server';
  }
  const id = typeof bundleId === 'string' ? ` ${plain(bundleId, 100)}` : '';
  return `grants go to: ${plain(name, 80)}${id}${typeof pid === 'number' ? ` (pid ${pid})` : ''}`;
}

function environmentLines(environment: NodeJS.ProcessEnv): string[] {
  const set = (name: string) => (environment[name] === undefined ? 'not set' : 'set');
  return process.platform === 'darwin'
    ? []
    : [
        `display: ${plain(environment['DISPLAY'] ?? 'not set', 40)}; session bus: ${set('DBUS_SESSION_BUS_ADDRESS')}`,
      ];
}

function limitLines(house: House): string[] {
  const { options, desk } = house;
  return [
    `may use: ${desk.apps.describe()}`,
    `limits: ${options.rate} calls a minute${options.readOnly ? '; reading only' : ''}${options.confirm ? '; asks before it deletes, sends or pays' : ''}`,
    `secrets to type: ${desk.secrets.names.join(', ') || 'none'}`,
  ];
}

async function report(house: House): Promise<{ text: string; isError: boolean }> {
  const { helper } = house.desk.link.options;
  const server = `server: tarqo-mcp ${house.version}, Node ${process.versions.node}`;
  if (typeof helper === 'string') {
    return {
      text: ['ready: NO', `helper: ${helper}`, server, 'next: tell the user'].join('\n'),
      isError: true,
    };
  }
  const where = `helper: ${plain(helper.command.join(' '), 300)} (${helper.why})`;
  try {
    const environment = await house.desk.link.environment();
    const version = (await versionOf(helper.command, environment)) ?? 'version not told';
    const host = await hostLine(house);
    const { lines, next } = await grants(house);
    const ready = next.length === 0;
    const after = ready ? ['list_apps or open_target'] : next;
    return {
      text: [
        `ready: ${ready ? 'yes' : 'NO'}`,
        host,
        ...lines,
        ...environmentLines(environment),
        `${where}, ${version}`,
        server,
        ...limitLines(house),
        ...after.map((step) => `next: ${step}`),
      ].join('\n'),
      isError: false,
    };
  } catch (error) {
    if (!(error instanceof HelperLost || error instanceof Refused)) {
      throw error;
    }
    const why = plain(error.message, 1500);
    return {
      text: [
        'ready: NO',
        `helper does not work: ${why}`,
        where,
        server,
        'next: tell the user',
      ].join('\n'),
      isError: true,
    };
  }
}

export const checkSetup = tool({
  name: 'check_setup',
  description:
    'Says in one answer whether everything is there: grants and who needs them, display, screen lock, helper, versions, limits, and what to do next.',
  schema: z.strictObject({}),
  hints: { readOnlyHint: true, openWorldHint: false },
  run: (_args, call, house) => house.desk.queue.run(call.signal, () => report(house)),
});
