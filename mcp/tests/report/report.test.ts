import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { readFileSync, statSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import { Recorder } from '../../src/recorder/recorder.js';
import { recordingFile } from '../../src/recorder/recording.js';
import { reportOf } from '../../src/report/report.js';
import { recordNotes, scratchFolder } from '../recorder/session.js';

const module = new URL('../../src/report/report.js', import.meta.url).href;

function runReport(...args: string[]) {
  const program = `import { runReport } from ${JSON.stringify(module)};
    process.exitCode = await runReport(process.argv.slice(1));`;
  const options = ['--input-type=module', '-e', program, '--', ...args];
  const { status, stdout, stderr } = spawnSync(process.execPath, options);
  return { status, stdout: stdout.toString(), stderr: stderr.toString() };
}

/** The texts of a step in a page, tags taken out, by the number of the step. */
function textOf(page: string, step: number): string {
  const section = page.split('<section ')[step] ?? '';
  return (
    section
      .split('</section>')[0]
      ?.replace(/<[^>]*>/g, ' ')
      .replace(/\s+/g, ' ') ?? ''
  );
}

interface Exchange {
  method: string;
  args?: object;
  answer?: object;
}

async function pageOf(folder: string, exchanges: Exchange[]): Promise<string> {
  const recorder = new Recorder(folder);
  for (const [id, { method, args, answer }] of exchanges.entries()) {
    recorder.request(JSON.stringify({ id, method, args }));
    if (answer !== undefined) {
      recorder.response(JSON.stringify({ id, ...answer }));
    }
  }
  recorder.close();
  return reportOf(recorder.folder ?? '');
}

function observed(nodes: object[], title = 'Window'): object {
  const all = [{ id: 's:0', role: 'window', rawRole: 'AXWindow', name: title, parentId: null }];
  return { result: { snapshot: { title, nodes: [...all, ...nodes] } } };
}

function node(id: number, role: string, name: string, more = {}): object {
  return { id: `s:${id}`, parentId: 's:0', role, name, ...more };
}

test('a step says what was asked, proven, sent and changed', async (t) => {
  const { folder } = await recordNotes(t);
  const page = await reportOf(folder);
  const click = textOf(page, 4);
  assert.match(click, /4\. click button “Save”/);
  assert.match(click, /Asked click nodeId: &quot;[0-9a-f-]+:\d+&quot;/);
  assert.match(click, /Proven The desktop was unlocked.*by role, name and identifier\./);
  assert.match(click, /Sent the element’s own press/);
  assert.match(click, /Changed .*Saved/);
  assert.match(click, /Then quiet after \d+ ms/);
});

test('a refusal stands out, with its check, its sentence and that nothing was sent', async (t) => {
  const { folder } = await recordNotes(t);
  const page = await reportOf(folder);
  assert.match(page, /<a href="#step-5" class="refused">/);
  const refusal = textOf(page, 5);
  assert.match(refusal, /refused: stale_snapshot/);
  assert.match(refusal, /Take a new snapshot before clicking\./);
  assert.match(refusal, /Sent nothing/);
  assert.doesNotMatch(refusal, /Proven/);
});

test('an action without an answer is unknown, not done', async (t) => {
  const page = await pageOf(scratchFolder(t), [
    { method: 'observe', answer: observed([node(1, 'button', 'Send')]) },
    { method: 'click', args: { nodeId: 's:1' } },
  ]);
  assert.match(textOf(page, 2), /click button “Send” unknown .*Sent unknown: no answer came/);
  assert.match(textOf(page, 2), /Changed Nobody looked\./);
});

test('what had gone out before a refusal is told', async (t) => {
  const page = await pageOf(scratchFolder(t), [
    {
      method: 'input',
      args: { kind: 'type', nodeId: 's:1', text: 'abc' },
      answer: { error: { code: 'target_covered', message: 'Covered.', sent: 'ab' } },
    },
  ]);
  assert.match(textOf(page, 1), /Sent only “ab”/);
});

test('what appeared, went and changed from look to look is told', async (t) => {
  const before = [
    node(1, 'text', 'Edited'),
    node(2, 'checkbox', 'Pinned', { value: '0' }),
    node(3, 'button', 'Close'),
    node(4, 'button', 'Keep'),
  ];
  const after = [
    node(1, 'text', 'Saved'),
    node(2, 'checkbox', 'Pinned', { value: '1' }),
    node(3, 'button', 'Keep', { focused: true }),
    node(4, 'dialog', 'Sure?'),
    node(5, 'button', 'Yes', { parentId: 's:4' }),
  ];
  const page = await pageOf(scratchFolder(t), [
    { method: 'observe', answer: observed(before) },
    { method: 'observe', answer: observed(after) },
  ]);
  const changes = textOf(page, 2)
    .replace(/.*Changed /, '')
    .replace(/ \d+ nodes listed.*/, '');
  assert.equal(
    changes.replace(/ +/g, ' ').trim(),
    'appeared dialog “Sure?” and 1 in it gone button “Close” ' +
      'changed checkbox “Pinned”: value “1”, before “0” changed button “Keep”: focused ' +
      'changed text “Edited”: now “Saved”',
  );
});

test('texts of applications are never markup', async (t) => {
  const evil =
    '</pre></script><script>alert(1)</script><img src=x onerror=alert(1)>"\'&\u202e\u0007';
  const page = await pageOf(scratchFolder(t), [
    { method: 'connect', args: { bundleId: evil, [evil]: evil }, answer: { result: {} } },
    {
      method: 'observe',
      answer: observed([node(1, evil, evil, { value: evil, bounds: evil, checked: evil })], evil),
    },
    { method: evil, args: { nodeId: 's:1' }, answer: { error: { code: evil, message: evil } } },
    { method: 'click', args: { nodeId: 's:1' }, answer: { result: { method: evil } } },
    { method: 'settle', answer: { result: { heard: [evil], quiet: evil } } },
    { method: 'geometry', answer: { result: { visibility: evil } } },
  ]);
  assert.equal(page.match(/<script/g)?.length, 1);
  assert.doesNotMatch(page, /<img|alert\(1\)<(?!\/?(span|code|li|p|h2|dd|title))/);
  assert.ok(page.includes('&lt;img src=x onerror=alert(1)&gt;&quot;&#39;&amp;‹202E›‹0007›'));
  assert.ok(!page.includes('\u202e') && !page.includes('\u0007'));
});

test('an answer of a megabyte of text makes no page of a megabyte', async (t) => {
  const name = 'x'.repeat(1_000_000);
  const nodes = Array.from({ length: 50 }, (_, at) => node(at + 1, 'button', name));
  const page = await pageOf(scratchFolder(t), [
    { method: 'observe', answer: observed(nodes, name) },
    { method: name, answer: { error: { code: name.slice(0, 100), message: name } } },
  ]);
  assert.ok(page.length < 100_000, String(page.length));
});

test('a recording cut off anywhere still makes a page', async (t) => {
  const { folder } = await recordNotes(t);
  const whole = readFileSync(join(folder, recordingFile));
  for (let length = 0; length < whole.length; length += 499) {
    writeFileSync(join(folder, recordingFile), whole.subarray(0, length));
    assert.match(await reportOf(folder), /<\/html>\n$/);
  }
});

test('the command writes the page beside the recording, for the user alone', async (t) => {
  const { folder } = await recordNotes(t);
  const done = runReport(folder);
  assert.deepEqual(done, { status: 0, stdout: join(folder, 'report.html') + '\n', stderr: '' });
  assert.equal(statSync(join(folder, 'report.html')).mode & 0o777, 0o600);
  const elsewhere = join(scratchFolder(t), 'page.html');
  assert.equal(runReport('--out', elsewhere, folder).stdout, elsewhere + '\n');
  assert.equal(readFileSync(elsewhere, 'utf8'), readFileSync(join(folder, 'report.html'), 'utf8'));
});

test('the command says what is wrong', (t) => {
  const folder = scratchFolder(t);
  for (const [args, text] of [
    [[], 'FOLDER is missing'],
    [[folder], 'holds no recording'],
    [['--out'], 'argument missing'],
    [[folder, folder], 'one FOLDER at a time'],
  ] as const) {
    const { status, stderr, stdout } = runReport(...args);
    assert.deepEqual({ status, stdout }, { status: 2, stdout: '' });
    assert.ok(stderr.includes(text), stderr);
  }
});
