// The command line as a process: recording, its report, its replay, a desktop for the agent alone.

import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { existsSync, mkdtempSync, readFileSync, readdirSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { dirname, join } from 'node:path';
import { after, describe, test } from 'node:test';

import { Client } from '@modelcontextprotocol/client';
import { StdioClientTransport } from '@modelcontextprotocol/client/stdio';

import { readOptions, UsageError } from '../src/options.js';
import { answeredOf, exampleScenes, mainProgram, simulator } from './support/session.js';

const scratch = mkdtempSync(join(tmpdir(), 'tarqo-mcp-'));
after(() => {
  rmSync(scratch, { recursive: true, force: true });
});

const scene = join(exampleScenes, 'notes_editor.json');
const onTheSimulator = ['--helper', simulator, '--helper-arg', scene];

/** What a server that is started with `args` answers to the calls, and what it says until `heard`. */
async function answers(
  args: string[],
  calls: { name: string; arguments: Record<string, unknown> }[],
  heard = /(?:)/,
): Promise<{ texts: string[]; said: string }> {
  const transport = new StdioClientTransport({
    command: process.execPath,
    args: [mainProgram, ...args],
    env: process.env as Record<string, string>,
    stderr: 'pipe',
  });
  let said = '';
  transport.stderr?.on('data', (chunk: Buffer) => {
    said += chunk.toString('utf8');
  });
  const client = new Client({ name: 'test', version: '1' });
  await client.connect(transport);
  try {
    const texts: string[] = [];
    for (const call of calls) {
      texts.push(answeredOf(await client.callTool(call)).text);
    }
    for (let left = 100; left > 0 && !heard.test(said); left--) {
      await new Promise((resolve) => setTimeout(resolve, 100));
    }
    return { texts, said };
  } finally {
    await client.close();
  }
}

function run(...args: string[]) {
  return spawnSync(process.execPath, [mainProgram, ...args], { encoding: 'utf8' });
}

/** Handles begin with letters that differ from process to process. */
/** They are drawn anew each time, and can be a part of any word. */
function withoutLetters(text: string): string {
  const letters = / as ([a-z]{3})\n/.exec(text)?.[1];
  return letters === undefined
    ? text
    : text.replaceAll(new RegExp(`\\b${letters}(?=\\d|\\n)`, 'g'), '…');
}

describe('The command line', () => {
  test('takes a size after --private-desktop, or the usual one', () => {
    assert.equal(readOptions(['--private-desktop']).privateDesktop, '1280x800');
    assert.equal(readOptions(['--private-desktop', '800x600']).privateDesktop, '800x600');
    const both = readOptions(['--private-desktop', '--read-only']);
    assert.deepEqual([both.privateDesktop, both.readOnly], ['1280x800', true]);
    assert.equal(readOptions([]).privateDesktop, undefined);
  });

  test('shows no desktop that it has not been told to start', () => {
    assert.throws(() => readOptions(['--view']), UsageError);
  });

  test('ends with 2 and one line for a command without its folder', () => {
    for (const command of ['report', 'replay']) {
      const { status, stdout, stderr } = run(command);
      assert.equal(status, 2, command);
      assert.equal(stdout, '', command);
      assert.match(stderr, /FOLDER/, command);
    }
  });

  test('records a session, shows it on a page, and plays it again in place of the helper', async () => {
    const calls = [
      { name: 'list_apps', arguments: {} },
      { name: 'open_target', arguments: { app: 'Notes', picture: false } },
    ];
    const live = await answers([...onTheSimulator, '--record', scratch], calls);
    assert.match(live.texts[1] ?? '', /Shopping/);
    const [name = ''] = readdirSync(scratch);
    const recording = join(scratch, name);

    const { status, stdout } = run('report', recording);
    assert.equal(status, 0);
    assert.match(readFileSync(stdout.trim(), 'utf8'), /Shopping/);

    const helperArgs = [mainProgram, 'replay', recording].map((arg) => `--helper-arg=${arg}`);
    const replayed = await answers(['--helper', process.execPath, ...helperArgs], calls);
    assert.deepEqual(replayed.texts.map(withoutLetters), live.texts.map(withoutLetters));
  });

  test('gives the agent a desktop of its own', { skip: process.platform !== 'linux' }, async () => {
    const helper = join(dirname(simulator), 'tarqo-ax');
    assert.ok(existsSync(helper), helper);
    const args = ['--helper', helper, '--private-desktop', '640x480', '--view'];
    const calls = [{ name: 'check_setup', arguments: {} }];
    const { texts, said } = await answers(args, calls, /shown at .*\n/);
    const display = /display: (:\d+)/.exec(texts[0] ?? '')?.[1];
    assert.ok(display, texts[0]);
    assert.notEqual(display, process.env['DISPLAY']);
    assert.match(texts[0] ?? '', /ready: yes/);
    assert.match(said, /the desktop is shown at http:\/\/127\.0\.0\.1:\d+\/[\w-]+\//);
  });

  test('says why there is no desktop for the agent', async () => {
    const args = [...onTheSimulator, '--private-desktop=much'];
    const { texts } = await answers(args, [{ name: 'list_apps', arguments: {} }]);
    assert.match(texts[0] ?? '', /refused · no_desktop · Not a size of a desktop: much/);
  });
});
