// What the server takes: tasks in real applications, and a page of 2,000 controls. Run by
// script/bench-mcp on a private desktop; the figures stand in docs/agent.md.

import { mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';

import { Driver, handleOf, type Said } from './driver.js';
import { opened, showPage, tasks } from './tasks.js';

const root = resolve(fileURLToPath(import.meta.url), '../../../..');
const helper = process.env['TARQO_AX'] ?? join(root, 'build/release/tarqo-ax');
const server = join(root, 'mcp/dist/main.js');
const controls = 2000;
const rounds = 7;

function median(values: number[]): number {
  return [...values].sort((a, b) => a - b)[Math.floor(values.length / 2)] ?? NaN;
}

function row(...cells: (string | number)[]): void {
  process.stdout.write(`| ${cells.join(' | ')} |\n`);
}

async function everydayTasks(driver: Driver, folder: string): Promise<boolean> {
  row('task', 'calls', 'characters read', 'seconds');
  row('---', '---', '---', '---');
  let all = true;
  for (const task of tasks) {
    driver.taken();
    const begin = performance.now();
    try {
      await task.run(driver, folder);
      const { calls, characters } = driver.taken();
      row(task.name, calls, characters, ((performance.now() - begin) / 1000).toFixed(1));
    } catch (error) {
      all = false;
      row(task.name, 'FAILED', '', '');
      process.stderr.write(
        `${task.name}: ${error instanceof Error ? error.message : String(error)}\n`,
      );
    }
  }
  return all;
}

const page = `<!doctype html><title>Controls</title><style>body{margin:0;font-size:6px}
button{width:24px;height:12px;padding:0;font-size:6px;position:relative}
#cover{position:absolute;left:0;top:0;width:60px;height:12px;background:#fc0;z-index:2}
p{margin:0}</style><div id=cover></div><p id=said>nothing</p>${Array.from(
  { length: controls },
  (_, index) => `<button onclick="said.textContent=this.textContent">b${index}</button>`,
).join('')}<script>const r=document.querySelector('button').getBoundingClientRect();
cover.style.top=r.top+'px'</script>`;

async function timed(action: () => Promise<Said>): Promise<{ ms: number; said: Said }> {
  const times: number[] = [];
  let said: Said | undefined;
  for (let round = 0; round < rounds; round++) {
    said = await action();
    times.push(said.ms);
  }
  if (said === undefined) {
    throw new Error('no round was run');
  }
  return { ms: median(times), said };
}

async function manyControls(driver: Driver, folder: string): Promise<void> {
  const browser = showPage(folder, 'controls', page);
  const shown = await opened(driver, 'chromium', '"b1"');
  const target = / as ([a-z]{3})$/m.exec(shown)?.[1] ?? '';
  row('2,000 controls in Chromium', 'here', 'peer');
  row('---', '---', '---');
  const look = await timed(() => driver.call('observe', { target, picture: 'none' }));
  const nodes = Number(/ (\d+) nodes/.exec(look.said.text)?.[1] ?? NaN);
  row('look, ms', look.ms.toFixed(0), 400);
  row('look, characters', look.said.text.length, 166_579);
  row('nodes in the look', nodes, '');
  const pictured = await timed(() => driver.call('observe', { target }));
  row('look with its picture, ms', pictured.ms.toFixed(0), '400 + 207');
  // A browser that is busy tells only a part of its page in time.
  const find = async (text: string) => {
    for (let attempt = 0; ; attempt++) {
      const seen = await driver.call('observe', { target, picture: 'none' });
      if (seen.text.includes(`button "${text}"`) || attempt === 5) {
        return handleOf(seen.text, new RegExp(`button "${text}"`));
      }
    }
  };
  const covered: number[] = [];
  const pressed: number[] = [];
  for (let round = 0; round < rounds; round++) {
    // A double click is made with the pointer, which the cover would get.
    const refusal = await driver.call('click', { node: await find('b0'), count: 2 });
    if (!refusal.text.startsWith('refused')) {
      throw new Error(`the covered button was clicked:\n${refusal.text}`);
    }
    covered.push(refusal.ms);
    const click = await driver.call('click', { node: await find(`b${100 + round}`) });
    if (!click.text.includes(`"b${100 + round}"`) || !click.text.startsWith('done')) {
      throw new Error(`no click:\n${click.text}`);
    }
    pressed.push(click.ms);
  }
  row('click of a covered control refused, ms', median(covered).toFixed(0), 5089);
  row('click, and what it changed, ms', median(pressed).toFixed(0), '1105 + 400, in two calls');
  browser.kill('SIGTERM');
}

async function main(): Promise<void> {
  const folder = mkdtempSync(join(tmpdir(), 'tarqo-mcp-bench-'));
  const driver = await Driver.start(server, ['--helper', helper, '--rate', '100000']);
  try {
    const listed = await driver.listed();
    row('connecting', 'here', 'peer');
    row('---', '---', '---');
    row('connected and listed, ms', driver.connectMs.toFixed(0), 740);
    row('tools', listed.tools, 25);
    row('bytes of their schemas', listed.bytes, 20_000);
    process.stdout.write('\n');
    const all = await everydayTasks(driver, folder);
    process.stdout.write('\n');
    await manyControls(driver, folder);
    process.exitCode = all ? 0 : 1;
  } finally {
    await driver.close();
    rmSync(folder, { recursive: true, force: true });
  }
}

await main();
