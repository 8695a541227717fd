// What the server takes: tasks in real applications, their windows as text, and a page of 2,000
// controls. Run by script/bench-mcp on a private desktop; the figures stand in docs/agent.md.

import { existsSync, mkdtempSync, rmSync } from 'node:fs';
import { cpus, loadavg, tmpdir } from 'node:os';
import { join, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';

import { manyControls } from './controls.js';
import { Driver } from './driver.js';
import { median, row } from './table.js';
import { tasks, type Place } from './tasks.js';
import { charactersOfALine } from './windows.js';

const root = resolve(fileURLToPath(import.meta.url), '../../../..');
const helper = process.env['TARQO_AX'] ?? join(root, 'build/release/tarqo-ax');
const server = join(root, 'mcp/dist/main.js');

async function connecting(driver: Driver): Promise<void> {
  const listed = await driver.listed();
  const trips: number[] = [];
  for (let round = 0; round < 21; round++) {
    // Of arguments that no tool takes, so that nobody but the server has to do with it.
    trips.push((await driver.call('find', { text: 'x', target: 'nobody' })).ms);
  }
  row('connecting', 'here', 'peer');
  row('---', '---', '---');
  row('connected, ms', driver.connectMs.toFixed(0), 740);
  row('tools', listed.tools, 25);
  row('bytes of their schemas', listed.bytes, 20_000);
  row('round trip, ms', median(trips).toFixed(1), '');
}

async function everydayTasks(place: Place): Promise<boolean> {
  const { driver } = place;
  row('task', 'calls', 'characters read', 'seconds');
  row('---', '---', '---', '---');
  let all = true;
  for (const task of tasks) {
    const lacking = task.needs.filter((program) => !existsSync(join('/usr/bin', program)));
    if (lacking.length > 0) {
      row(task.name, `needs ${lacking.join(', ')}`, '', '');
      continue;
    }
    driver.taken();
    const begin = performance.now();
    try {
      await task.run(place);
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

function load(when: string): void {
  const [now = 0] = loadavg();
  process.stdout.write(`\n${when}: load ${now.toFixed(1)} on ${cpus().length} processors\n\n`);
}

async function main(): Promise<void> {
  const folder = mkdtempSync(join(tmpdir(), 'tarqo-mcp-bench-'));
  const driver = await Driver.start(server, ['--helper', helper, '--rate', '100000']);
  const place: Place = { driver, folder, environment: process.env };
  try {
    load('At the beginning');
    await connecting(driver);
    process.stdout.write('\n');
    const all = await everydayTasks(place);
    process.stdout.write('\n');
    await charactersOfALine(place);
    process.stdout.write('\n');
    await manyControls(place);
    load('At the end');
    process.exitCode = all ? 0 : 1;
  } finally {
    await driver.close();
    rmSync(folder, { recursive: true, force: true });
  }
}

await main();
