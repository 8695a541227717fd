import assert from 'node:assert/strict';
import { cpSync, readdirSync, readFileSync, rmSync, statSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import { exchangesOf, type Happening } from '../../src/recorder/exchanges.js';
import { Recorder } from '../../src/recorder/recorder.js';
import {
  entriesOf,
  findRecording,
  isRecord,
  NoRecording,
  pictureOf,
  recordingFile,
} from '../../src/recorder/recording.js';
import { recordNotes, scratchFolder } from './session.js';

async function all<T>(values: AsyncIterable<T>): Promise<T[]> {
  const list: T[] = [];
  for await (const value of values) {
    list.push(value);
  }
  return list;
}

function exchanges(happenings: Happening[]) {
  return happenings.filter((each) => each.kind === 'exchange');
}

test('a session is kept whole: every request, every answer, every picture', async (t) => {
  const { folder, answers } = await recordNotes(t);
  const happenings = await all(exchangesOf(entriesOf(folder)));
  assert.deepEqual(
    happenings.map((each) => (each.kind === 'exchange' ? each.request?.['method'] : each.kind)),
    ['recording', 'started', 'connect', 'observe', 'click', 'settle', 'click', 'observe'].concat([
      'input',
      'observe',
      'ended',
    ]),
  );
  for (const [index, exchange] of exchanges(happenings).entries()) {
    const whole = JSON.parse(answers[index] ?? '') as { result?: Record<string, unknown> };
    const image = isRecord(exchange.answer?.['result']) && exchange.answer['result']['image'];
    if (isRecord(whole.result?.['image']) && isRecord(image)) {
      const kept = await pictureOf(folder, image);
      assert.equal(kept?.toString('base64'), whole.result['image']['base64']);
      delete whole.result['image'];
      delete (exchange.answer?.['result'] as Record<string, unknown>)['image'];
    }
    assert.deepEqual(exchange.answer, whole);
  }
});

test('nobody but the user may read a recording', async (t) => {
  const { folder } = await recordNotes(t);
  assert.equal(statSync(folder).mode & 0o777, 0o700);
  for (const name of readdirSync(folder, { recursive: true }) as string[]) {
    const kept = statSync(join(folder, name));
    assert.equal(kept.mode & 0o777, kept.isDirectory() ? 0o700 : 0o600, name);
  }
});

test('equal pictures are kept once', (t) => {
  const recorder = new Recorder(scratchFolder(t));
  const base64 = Buffer.from('the same').toString('base64');
  for (const id of [1, 2, 3]) {
    recorder.request(`{"id":${id},"method":"observe"}`);
    recorder.response(JSON.stringify({ id, result: { image: { base64 } } }));
  }
  assert.equal(readdirSync(join(recorder.folder ?? '', 'pictures')).length, 1);
});

test('servers with the same folder keep recordings of their own, and the newest is found', async (t) => {
  const parent = scratchFolder(t);
  const first = new Recorder(parent);
  const second = new Recorder(parent);
  assert.notEqual(first.folder, second.folder);
  const found = await findRecording(parent);
  assert.equal(found.count, 2);
  assert.ok([first.folder, second.folder].includes(found.folder));
});

test('a recording cut off at any byte is read up to there', async (t) => {
  const { folder } = await recordNotes(t);
  const whole = readFileSync(join(folder, recordingFile));
  const kept = exchanges(await all(exchangesOf(entriesOf(folder))));
  const cut = join(scratchFolder(t), 'cut');
  cpSync(folder, cut, { recursive: true });
  // Every byte of the end of a line and of its beginning, and one in 97 of the rest.
  const edges = (at: number) => whole.subarray(Math.max(0, at - 3), at + 3).includes(10);
  for (let length = 0; length < whole.length; length += 1) {
    if (length % 97 !== 0 && !edges(length)) {
      continue;
    }
    writeFileSync(join(cut, recordingFile), whole.subarray(0, length));
    const read = exchanges(await all(exchangesOf(entriesOf(cut))));
    for (const [index, exchange] of read.entries()) {
      assert.deepEqual(exchange.request, kept[index]?.request);
      if (exchange.answeredAt !== undefined) {
        assert.deepEqual(exchange.answer, kept[index]?.answer);
      }
    }
    const lines = whole.subarray(0, length).toString().split('"kind":"answer"').length - 1;
    assert.ok(read.filter((each) => each.answeredAt !== undefined).length >= lines - 1);
  }
});

test('damage in the middle costs the damaged lines alone', async (t) => {
  const { folder } = await recordNotes(t);
  const path = join(folder, recordingFile);
  const lines = readFileSync(path, 'utf8').split('\n');
  lines[5] = '\u0000\u0001{"kind":"answer"';
  lines.splice(6, 0, '[]', '{"kind":"nobody knows"}', '');
  writeFileSync(path, lines.join('\n'));
  const happenings = await all(exchangesOf(entriesOf(folder)));
  assert.equal(happenings.filter((each) => each.kind === 'damage').length, 4);
  const answered = exchanges(happenings).map((each) => each.answer !== undefined);
  assert.deepEqual(answered, [true, false, true, true, true, true, true, true]);
});

test('a picture that is not whole counts as missing, and none is read from elsewhere', async (t) => {
  const folder = scratchFolder(t);
  writeFileSync(join(folder, 'secret.png'), 'secret');
  assert.equal(await pictureOf(folder, { file: 'secret.png', bytes: 6 }), undefined);
  const file = `pictures/${'0'.repeat(32)}.png`;
  assert.equal(await pictureOf(folder, { file: `../${file}`, bytes: 6 }), undefined);
  const { folder: recording } = await recordNotes(t);
  const name = readdirSync(join(recording, 'pictures'))[0] ?? '';
  const { size } = statSync(join(recording, 'pictures', name));
  const image = { file: `pictures/${name}`, bytes: size };
  assert.equal((await pictureOf(recording, image))?.length, size);
  assert.equal(await pictureOf(recording, { ...image, bytes: size + 1 }), undefined);
});

test('what is typed into a password field is kept nowhere', async (t) => {
  const recorder = new Recorder(scratchFolder(t));
  const nodes = [{ id: 's:1', secure: true }, { id: 's:2' }];
  recorder.response(JSON.stringify({ id: 1, result: { snapshot: { nodes } } }));
  for (const [id, nodeId] of ['s:1', 's:2', 's:1'].entries()) {
    const args = { kind: 'type', nodeId, text: `hunter${id}` };
    recorder.request(JSON.stringify({ id, method: 'input', args }));
    const part = id < 2 ? 'result' : 'error';
    recorder.response(JSON.stringify({ id, [part]: { nodeId, sent: `hunter${id}` } }));
  }
  const kept = readFileSync(join(recorder.folder ?? '', recordingFile), 'utf8');
  assert.doesNotMatch(kept, /hunter[02]/);
  assert.equal(kept.match(/hunter1/g)?.length, 2);
  assert.equal(kept.match(/••••/g)?.length, 4);
  assert.equal(exchanges(await all(exchangesOf(entriesOf(recorder.folder ?? '')))).length, 3);
});

test('nonsense of a helper is kept as it came, up to a limit', async (t) => {
  const recorder = new Recorder(scratchFolder(t));
  recorder.request('{"id":1,"method":"host"}');
  recorder.response('\u0000 half a li');
  recorder.request('{"id":2,"method":"host"}');
  recorder.response('x'.repeat(1_000_000));
  const [first, second] = exchanges(await all(exchangesOf(entriesOf(recorder.folder ?? ''))));
  assert.equal(first?.nonsense, '\u0000 half a li');
  assert.equal(second?.nonsense?.length, 100_000);
});

test('a folder that cannot be made leaves the server alone, with one warning', (t) => {
  const file = join(scratchFolder(t), 'file');
  writeFileSync(file, '');
  const warnings: string[] = [];
  const recorder = new Recorder(join(file, 'folder'), (text) => warnings.push(text));
  recorder.started({ command: ['x'], pid: 1 });
  recorder.request('{"id":1}');
  recorder.close();
  assert.equal(warnings.length, 1);
  assert.match(warnings[0] ?? '', /^nothing is recorded: ENOTDIR/);
});

test('pictures that cannot be written end the recording with one warning', async (t) => {
  const warnings: string[] = [];
  const recorder = new Recorder(scratchFolder(t), (text) => warnings.push(text));
  const folder = recorder.folder ?? '';
  rmSync(join(folder, 'pictures'), { recursive: true });
  recorder.request('{"id":1,"method":"observe"}');
  recorder.response('{"id":1,"result":{"image":{"base64":"AAAA"}}}');
  recorder.request('{"id":2,"method":"observe"}');
  assert.equal(warnings.length, 1);
  assert.match(warnings[0] ?? '', /ends here, the session goes on: ENOENT/);
  assert.equal(exchanges(await all(exchangesOf(entriesOf(folder)))).length, 1);
});

test('a folder without a recording says how to make one', async (t) => {
  const folder = scratchFolder(t);
  await assert.rejects(findRecording(folder), (error) => {
    return error instanceof NoRecording && error.message.includes(`--record ${folder}`);
  });
  await assert.rejects(findRecording(join(folder, 'gone')), NoRecording);
});

test('a recording of a later version is refused by name', async (t) => {
  const folder = scratchFolder(t);
  writeFileSync(join(folder, recordingFile), '{"kind":"recording","version":2,"at":"later"}\n');
  await assert.rejects(all(entriesOf(folder)), NoRecording);
});
