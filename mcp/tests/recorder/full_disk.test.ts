import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { readFileSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import { scratchFolder } from './session.js';

const canMount = spawnSync('unshare', ['-rm', 'true']).status === 0;

test(
  'a full disk ends the recording with one warning, and what was kept is read',
  { skip: canMount ? false : 'needs unshare(1) and a mount namespace' },
  (t) => {
    const recorder = new URL('../../src/recorder/recorder.js', import.meta.url).href;
    const program = `
      import { Recorder } from ${JSON.stringify(recorder)};
      import { cpSync } from 'node:fs';
      const recorder = new Recorder('disk');
      for (let id = 0; id < 5000; id += 1) {
        recorder.request(JSON.stringify({ id, method: 'x'.repeat(100) }));
      }
      cpSync(recorder.folder, 'kept', { recursive: true });
      console.log('the server lives');`;
    const folder = scratchFolder(t);
    const mount = 'mkdir disk && mount -t tmpfs -o size=128k none disk && exec "$@"';
    const run = [process.execPath, '--input-type=module', '-e', program];
    const done = spawnSync('unshare', ['-rm', 'sh', '-c', mount, 'sh', ...run], { cwd: folder });
    assert.equal(done.stdout.toString(), 'the server lives\n', done.stderr.toString());
    const warnings = done.stderr.toString().trim().split('\n');
    assert.equal(warnings.length, 1);
    assert.match(warnings[0] ?? '', /^tarqo-mcp: the recording in .* ends here.*ENOSPC/);
    const lines = readFileSync(join(folder, 'kept/recording.jsonl'), 'utf8').split('\n');
    assert.ok(lines.length > 100);
    // All but the last, which the disk had no room for, are whole.
    lines.slice(0, -1).forEach((line) => JSON.parse(line) as unknown);
  },
);
