import assert from 'node:assert/strict';
import { execFileSync, spawn, spawnSync } from 'node:child_process';
import { once } from 'node:events';
import { existsSync, readFileSync } from 'node:fs';
import { resolve } from 'node:path';
import { test } from 'node:test';
import { setTimeout as pause } from 'node:timers/promises';
import { NoPrivateDesktop, startPrivateDesktop } from '../../src/desktop/private_desktop.js';
import { repository } from '../recorder/session.js';

const skip = spawnSync('Xvfb', ['-help']).error ? 'needs Xvfb' : false;
const module = new URL('../../src/desktop/private_desktop.js', import.meta.url).href;

function isAlive(pid: string | undefined): boolean {
  try {
    // A process that ended and was not reaped yet is no more.
    return !readFileSync(`/proc/${pid}/stat`, 'utf8').split(') ')[1]?.startsWith('Z');
  } catch {
    return false;
  }
}

async function gone(env: Record<string, string>, ms: number): Promise<boolean> {
  const pids = ['X', 'BUS', 'WM'].map((part) => env[`TARQO_DESKTOP_${part}_PID`]);
  assert.ok(pids.every((pid) => pid !== undefined));
  for (const deadline = Date.now() + ms; Date.now() < deadline;) {
    await pause(20);
    if (!pids.some(isAlive) && !existsSync(env['TARQO_DESKTOP'] ?? '')) {
      return true;
    }
  }
  return false;
}

test(
  'a desktop of its own has all that the helper needs, and ends when told',
  { skip },
  async () => {
    const { env, stop } = await startPrivateDesktop('800x600');
    try {
      assert.notEqual(env['DISPLAY'], process.env['DISPLAY']);
      assert.notEqual(env['HOME'], process.env['HOME']);
      const root = execFileSync('xwininfo', ['-root'], { env }).toString();
      assert.match(root, /-geometry 800x600/);
      const helper = resolve(repository, 'build/release/tarqo-ax');
      if (existsSync(helper)) {
        const input = '{"id":1,"method":"preflight"}\n';
        const done = spawnSync(helper, { env, input });
        assert.match(done.stdout.toString(), /"accessibility":true.*"screenCapture":true/);
      }
      // What was started with its environment from outside goes with it.
      const outside = spawn('sleep', ['60'], { env, stdio: 'ignore' });
      const ended = once(outside, 'exit');
      await stop();
      assert.ok(await gone(env, 500));
      await ended;
      await stop();
    } finally {
      await stop();
    }
  },
);

for (const signal of ['SIGKILL', 'SIGTERM'] as const) {
  test(`the desktop ends when its server dies of ${signal}`, { skip }, async () => {
    const program = `
      import { startPrivateDesktop } from ${JSON.stringify(module)};
      const { env } = await startPrivateDesktop('640x480');
      process.stdout.write(JSON.stringify(env));
      setInterval(() => undefined, 1000);`;
    const server = spawn(process.execPath, ['--input-type=module', '-e', program], {
      stdio: ['ignore', 'pipe', 'inherit'],
    });
    const [text] = (await once(server.stdout, 'data')) as [Buffer];
    const env = JSON.parse(text.toString()) as Record<string, string>;
    assert.ok(isAlive(env['TARQO_DESKTOP_X_PID']));
    server.kill(signal);
    assert.ok(await gone(env, 5000));
  });
}

test('a server that has nothing else to do is not kept alive by its desktop', { skip }, () => {
  const program = `
    import { startPrivateDesktop } from ${JSON.stringify(module)};
    await startPrivateDesktop('640x480');`;
  const options = ['--input-type=module', '-e', program];
  assert.equal(spawnSync(process.execPath, options, { timeout: 20_000 }).status, 0);
});

test('what keeps the desktop from coming up is told', { skip }, async () => {
  await assert.rejects(startPrivateDesktop('huge'), /Give WIDTHxHEIGHT/);
  const program = `
    import { startPrivateDesktop } from ${JSON.stringify(module)};
    await startPrivateDesktop('640x480').catch((error) => console.log(error.message));`;
  const options = ['--input-type=module', '-e', program];
  const env = { ...process.env, PATH: '/nowhere' };
  const done = spawnSync(process.execPath, options, { env });
  assert.match(done.stdout.toString(), /did not start: .*X server cannot be started.*Xvfb/);
});

test('the failure is of a kind of its own', async () => {
  await assert.rejects(startPrivateDesktop('1x'), (error) => error instanceof NoPrivateDesktop);
});
