import assert from 'node:assert/strict';
import { spawn, spawnSync } from 'node:child_process';
import { once } from 'node:events';
import { readdirSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { PassThrough, Readable } from 'node:stream';
import { test } from 'node:test';
import { Recorder } from '../../src/recorder/recorder.js';
import { recordingFile } from '../../src/recorder/recording.js';
import { replay, type ReplayEnd } from '../../src/recorder/replay.js';
import { Conversation, playNotes, recordNotes, scratchFolder } from './session.js';

const replayModule = new URL('../../src/recorder/replay.js', import.meta.url).href;

function replayCommand(...args: string[]): string[] {
  const program = `import { runReplay } from ${JSON.stringify(replayModule)};
    process.exitCode = await runReplay(process.argv.slice(1));`;
  return [process.execPath, '--input-type=module', '-e', program, '--', ...args];
}

interface Replayed {
  end: ReplayEnd;
  answers: { id: unknown; result?: unknown; error?: { code: string; message: string } }[];
  said: string[];
}

async function ask(folder: string, requests: unknown[], run = 1): Promise<Replayed> {
  const lines = requests.map((each) => (typeof each === 'string' ? each : JSON.stringify(each)));
  const output = new PassThrough();
  const said: string[] = [];
  const streams = { input: Readable.from(lines.map((line) => line + '\n')), output };
  const end = await replay(folder, run, { ...streams, say: (text) => said.push(text) });
  output.end();
  const text = Buffer.concat((await output.toArray()) as Buffer[]).toString();
  const answers = text.split('\n').filter((line) => line !== '');
  return { end, answers: answers.map((line) => JSON.parse(line) as never), said };
}

/** A recording of requests and answers that a test makes up. */
function record(folder: string, exchanges: [request: object, answer?: object][]): Recorder {
  const recorder = new Recorder(folder);
  recorder.started({ command: ['helper'], pid: 1 });
  for (const [request, answer] of exchanges) {
    recorder.request(JSON.stringify(request));
    if (answer !== undefined) {
      recorder.response(JSON.stringify(answer));
    }
  }
  return recorder;
}

test('a recorded session is served again, byte for byte', async (t) => {
  const { folder, answers } = await recordNotes(t);
  const conversation = new Conversation(replayCommand(folder));
  await playNotes(conversation);
  assert.equal(await conversation.end(), 0);
  assert.deepEqual(conversation.answers, answers);
});

test('an answer comes with the id of the request that is asked now', async (t) => {
  const folder = scratchFolder(t);
  record(folder, [
    [
      { id: 7, method: 'host' },
      { id: 7, result: { known: false } },
    ],
  ]);
  const { answers } = await ask(folder, [{ id: { any: ['value'] }, method: 'host', args: [] }]);
  assert.deepEqual(answers, [{ id: { any: ['value'] }, result: { known: false } }]);
});

test('a request that differs is refused with what was recorded, which stays next', async (t) => {
  const folder = scratchFolder(t);
  record(folder, [
    [
      { id: 1, method: 'click', args: { nodeId: 'a:1' } },
      { id: 1, result: {} },
    ],
  ]);
  const { answers, end } = await ask(folder, [
    { id: 5, method: 'hover', args: { nodeId: 'a:1' } },
    { id: 6, method: 'click', args: { nodeId: 'a:2' } },
    'no request',
    { id: 8, method: 'click', args: { nodeId: 'a:1' } },
    { id: 9, method: 'click', args: { nodeId: 'a:1' } },
  ]);
  assert.deepEqual(answers[0], {
    id: 5,
    error: {
      code: 'replay_differs',
      message:
        'Request 1 was recorded as click {"nodeId":"a:1"}, asked was hover {"nodeId":"a:1"}.',
    },
  });
  assert.equal(answers[1]?.error?.code, 'replay_differs');
  assert.equal(answers[2]?.id, null);
  assert.deepEqual(answers[3], { id: 8, result: {} });
  assert.match(answers[4]?.error?.message ?? '', /^Nothing more was recorded/);
  assert.deepEqual(end, { status: 1 });
});

test('what differs from run to run, and what was hidden, counts as the same', async (t) => {
  const folder = scratchFolder(t);
  const args = { nodeId: 'a:1', kind: 'type', text: '••••' };
  record(folder, [
    [
      { id: 1, method: 'settle', args: { sinceMs: 1, quietMs: 20 } },
      { id: 1, result: {} },
    ],
    [
      { id: 2, method: 'input', args },
      { id: 2, result: { sent: '••••' } },
    ],
  ]);
  const { answers, end } = await ask(folder, [
    { id: 1, method: 'settle', args: { sinceMs: 2, quietMs: 20 } },
    { id: 2, method: 'input', args: { ...args, text: 'hunter2' } },
  ]);
  assert.deepEqual(answers[1], { id: 2, result: { sent: '••••' } });
  assert.deepEqual(end, { status: 0 });
});

test('a helper that died dies again, of the same cause', async (t) => {
  const folder = scratchFolder(t);
  const recorder = record(folder, [[{ id: 1, method: 'host' }]]);
  recorder.ended({ code: null, signal: 'SIGKILL' });
  const [program, ...args] = replayCommand(folder);
  const child = spawn(program ?? '', args, { stdio: ['pipe', 'ignore', 'inherit'] });
  child.stdin.write('{"id":1,"method":"host"}\n');
  assert.deepEqual(await once(child, 'exit'), [null, 'SIGKILL']);
});

test('each helper process of a session can be stood in for', async (t) => {
  const folder = scratchFolder(t);
  const recorder = record(folder, [[{ id: 1, method: 'host' }]]);
  recorder.ended({ code: 3, signal: null });
  recorder.started({ command: ['helper'], pid: 2 });
  recorder.request('{"id":1,"method":"geometry"}');
  recorder.response('{"id":1,"result":{"second":true}}');
  assert.deepEqual((await ask(folder, [{ id: 1, method: 'host' }])).end, { status: 3 });
  const second = await ask(folder, [{ id: 4, method: 'geometry' }], 2);
  assert.deepEqual(second.answers, [{ id: 4, result: { second: true } }]);
  await assert.rejects(ask(folder, [], 3), /no request to a helper process number 3/);
});

test('where the recording was cut off, the answer says so', async (t) => {
  const folder = scratchFolder(t);
  record(folder, [[{ id: 1, method: 'host' }]]);
  const { answers } = await ask(folder, [{ id: 1, method: 'host' }]);
  assert.deepEqual(answers[0]?.error, {
    code: 'replay_incomplete',
    message: 'The recording ends at request 1.',
  });
});

test('a picture that is gone is no empty picture', async (t) => {
  const { folder } = await recordNotes(t);
  rmSync(join(folder, 'pictures'), { recursive: true });
  const connect = { id: 1, method: 'connect', args: { bundleId: 'com.example.Notes' } };
  const { answers } = await ask(folder, [connect, { id: 2, method: 'observe' }]);
  assert.equal(answers[1]?.error?.code, 'replay_incomplete');
});

test('what was recorded and not asked is told at the end', async (t) => {
  const { folder } = await recordNotes(t);
  const { said } = await ask(folder, []);
  assert.deepEqual(said, ['8 recorded requests were not asked']);
});

test('close ends the replay, which the recording need not know', async (t) => {
  const folder = scratchFolder(t);
  record(folder, [
    [
      { id: 1, method: 'host' },
      { id: 1, result: {} },
    ],
  ]);
  const { end, answers } = await ask(folder, [{ id: 1, method: 'close' }, { id: 2 }]);
  assert.deepEqual({ end, answers }, { end: { status: 0 }, answers: [] });
});

test('no half of a recording ends a replay with an error of its own', async (t) => {
  const { folder } = await recordNotes(t);
  const whole = readFileSync(join(folder, recordingFile));
  const connect = { id: 1, method: 'connect', args: { bundleId: 'com.example.Notes' } };
  for (let length = 0; length < whole.length; length += 211) {
    writeFileSync(join(folder, recordingFile), whole.subarray(0, length));
    try {
      const { answers } = await ask(folder, [connect]);
      assert.equal(answers.length, 1);
    } catch (error) {
      assert.match(String(error), /no request to a helper process number 1/);
    }
  }
});

test('the command says what is wrong with its arguments', (t) => {
  const folder = scratchFolder(t);
  for (const [args, text] of [
    [[], 'FOLDER is missing'],
    [['--run', '0', folder], 'a run from 1 on'],
    [['--fast', folder], "Unknown option '--fast'"],
    [[folder], 'holds no recording'],
  ] as const) {
    const [program, ...rest] = replayCommand(...args);
    const done = spawnSync(program ?? '', rest, { input: '' });
    assert.equal(done.status, 2);
    assert.ok(done.stderr.toString().includes(text), done.stderr.toString());
    assert.equal(done.stdout.toString(), '');
  }
  assert.deepEqual(readdirSync(folder), []);
});
