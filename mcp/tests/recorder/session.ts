// Sessions for the tests of recordings: a helper process that is asked line by line, with a tap.

import { spawn } from 'node:child_process';
import { once } from 'node:events';
import { mkdtempSync } from 'node:fs';
import { rm } from 'node:fs/promises';
import { tmpdir } from 'node:os';
import { join, resolve } from 'node:path';
import { createInterface } from 'node:readline';
import type { TestContext } from 'node:test';
import { fileURLToPath } from 'node:url';
import type { HelperTap } from '../../src/helper/tap.js';
import { Recorder } from '../../src/recorder/recorder.js';

export const repository = fileURLToPath(new URL('../../../../', import.meta.url));
export const simulator =
  process.env['TARQO_SIM'] ?? resolve(repository, 'build/release/tarqo-ax-sim');

export function notesScene(): string[] {
  return [simulator, resolve(repository, 'simulator/examples/notes_editor.json')];
}

/** A folder that goes when the test is over. */
export function scratchFolder(t: TestContext): string {
  const folder = mkdtempSync(join(tmpdir(), 'tarqo-mcp-test-'));
  t.after(() => rm(folder, { recursive: true, force: true }));
  return folder;
}

/** Asks each request when the one before is answered, then ends the helper's input. */
export class Conversation {
  readonly answers: string[] = [];
  private readonly child;
  private readonly lines;
  private id = 0;

  constructor(
    command: string[],
    private readonly tap?: HelperTap,
  ) {
    this.child = spawn(command[0] ?? '', command.slice(1), { stdio: ['pipe', 'pipe', 'inherit'] });
    this.lines = createInterface({ input: this.child.stdout })[Symbol.asyncIterator]();
    tap?.started({ command, pid: this.child.pid ?? 0 });
  }

  async ask(method: string, args?: object): Promise<Answer> {
    this.id += 1;
    const request = JSON.stringify({ id: this.id, method, ...(args && { args }) });
    this.tap?.request(request);
    this.child.stdin.write(request + '\n');
    const line = (await this.lines.next()) as { value?: string };
    if (line.value === undefined) {
      throw new Error('the helper ended');
    }
    this.tap?.response(line.value);
    this.answers.push(line.value);
    return JSON.parse(line.value) as Answer;
  }

  async end(): Promise<number | null> {
    this.child.stdin.end();
    if (this.child.exitCode === null) {
      await once(this.child, 'exit');
    }
    this.tap?.ended({ code: this.child.exitCode, signal: this.child.signalCode });
    return this.child.exitCode;
  }
}

export interface Answer {
  id: unknown;
  result?: {
    snapshot?: { nodes: { id: string; name: string; role: string }[] };
    [name: string]: unknown;
  };
  error?: { code: string; message: string };
}

export function nodeNamed(answer: Answer, name: string): string {
  const node = answer.result?.snapshot?.nodes.find((each) => each.name === name);
  if (node === undefined) {
    throw new Error(`no node is called ${name}`);
  }
  return node.id;
}

/** Saves a note, tries a click with a used node, and looks again: two pictures, one refusal. */
export async function playNotes(conversation: Conversation): Promise<void> {
  await conversation.ask('connect', { bundleId: 'com.example.Notes' });
  const save = nodeNamed(await conversation.ask('observe'), 'Save');
  await conversation.ask('click', { nodeId: save });
  await conversation.ask('settle', { quietMs: 100, sinceMs: Date.now() });
  await conversation.ask('click', { nodeId: save });
  const text = nodeNamed(await conversation.ask('observe'), 'Note');
  await conversation.ask('input', { nodeId: text, kind: 'type', text: '</script><b>한글 😀' });
  await conversation.ask('observe', { image: false });
}

/** A recording of that session. Gives its folder and the helper's answers. */
export async function recordNotes(t: TestContext): Promise<{ folder: string; answers: string[] }> {
  const recorder = new Recorder(scratchFolder(t));
  const conversation = new Conversation(notesScene(), recorder);
  await playNotes(conversation);
  await conversation.end();
  recorder.close();
  return { folder: recorder.folder ?? '', answers: conversation.answers };
}
