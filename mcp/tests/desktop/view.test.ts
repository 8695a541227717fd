import assert from 'node:assert/strict';
import { spawn, spawnSync } from 'node:child_process';
import { rmSync, writeFileSync } from 'node:fs';
import { request, type IncomingHttpHeaders } from 'node:http';
import { connect } from 'node:net';
import { networkInterfaces } from 'node:os';
import { join } from 'node:path';
import { test, type TestContext } from 'node:test';
import { setTimeout as pause } from 'node:timers/promises';
import sharp from 'sharp';
import { startPrivateDesktop } from '../../src/desktop/private_desktop.js';
import { startView } from '../../src/desktop/view.js';
import { scratchFolder } from '../recorder/session.js';
import { chromium, Tab } from '../report/chromium.js';

const width = 64;
const height = 48;

/** A screen of one colour, as an X server keeps it. */
function screenOf(red: number, green: number, blue: number): Buffer {
  const header = Buffer.alloc(100 + 12);
  const words = [100, 7, 2, 24, width, height, 0, 0, 32, 0, 32, 32, width * 4];
  words.forEach((word, index) => header.writeUInt32BE(word, index * 4));
  header.writeUInt32BE(1, 19 * 4);
  return Buffer.concat([
    header,
    Buffer.alloc(width * height * 4, Buffer.from([blue, green, red, 0])),
  ]);
}

async function viewOf(t: TestContext, screen = screenOf(200, 100, 0)) {
  const path = join(scratchFolder(t), 'screen');
  writeFileSync(path, screen);
  const view = await startView({ env: { TARQO_DESKTOP_SCREEN: path } });
  t.after(() => view.stop());
  return { path, url: new URL(view.url), stop: view.stop };
}

interface Answer {
  status: number | undefined;
  headers: IncomingHttpHeaders;
  body: Buffer;
}

function get(url: URL | string, options: object = {}): Promise<Answer> {
  return new Promise((give, fail) => {
    request(url, { agent: false, ...options }, (response) => {
      response.toArray().then((parts: Buffer[]) => {
        const { statusCode: status, headers } = response;
        give({ status, headers, body: Buffer.concat(parts) });
      }, fail);
    })
      .on('error', fail)
      .end();
  });
}

async function colourOf(jpeg: Buffer): Promise<number[]> {
  const { data, info } = await sharp(jpeg).raw().toBuffer({ resolveWithObject: true });
  return [...data.subarray(0, info.channels)];
}

function assertNear(actual: number[], expected: number[]): void {
  actual.forEach((value, at) => {
    assert.ok(Math.abs(value - (expected[at] ?? NaN)) <= 3, actual.join());
  });
}

test('a frame shows the screen, and the next one comes when it changes', async (t) => {
  const { url, path } = await viewOf(t);
  const first = await get(new URL('frame?after=0', url));
  assert.equal(first.status, 200);
  assertNear(await colourOf(first.body), [200, 100, 0]);
  const number = String(first.headers['x-frame']);
  const later = get(new URL(`frame?after=${number}`, url));
  await pause(250);
  writeFileSync(path, screenOf(0, 50, 250));
  const second = await later;
  assertNear(await colourOf(second.body), [0, 50, 250]);
  assert.notEqual(second.headers['x-frame'], number);
});

test('without the token nobody gets anything', async (t) => {
  const { url } = await viewOf(t);
  assert.match(url.pathname, /^\/[\w-]{32}\/$/);
  const wrong = url.pathname.replace(/.\/$/, (end) => (end === 'a/' ? 'b/' : 'a/'));
  for (const path of ['/', '/frame', wrong, '/%00/', '//', '/../', `/x${url.pathname}`]) {
    const { status, body } = await get(url, { path });
    assert.equal(status, 403, path);
    assert.ok(!body.includes('<'));
  }
  assert.equal((await get(new URL('nothing', url))).status, 404);
});

test('another name for this machine is refused: the page of somebody else led here', async (t) => {
  const { url } = await viewOf(t);
  for (const host of [
    'evil.example',
    `evil.example:${url.port}`,
    '127.0.0.1',
    `[::1]:${url.port}`,
  ]) {
    assert.equal((await get(url, { headers: { host } })).status, 403, host);
  }
  const host = `localhost:${url.port}`;
  assert.equal((await get(url, { headers: { host } })).status, 200);
});

test('nothing but looking is possible', async (t) => {
  const { url } = await viewOf(t);
  for (const method of ['POST', 'PUT', 'DELETE', 'OPTIONS', 'HEAD']) {
    assert.equal((await get(url, { method })).status, 405, method);
  }
  const { headers } = await get(url);
  assert.equal(headers['access-control-allow-origin'], undefined);
  assert.match(String(headers['content-security-policy']), /default-src 'none'.*frame-ancestors/);
  assert.equal(headers['cache-control'], 'no-store');
});

test('it listens on the loopback interface alone', async (t) => {
  const { url } = await viewOf(t);
  assert.equal(url.hostname, '127.0.0.1');
  const others = Object.values(networkInterfaces())
    .flatMap((addresses) => addresses ?? [])
    .filter((address) => !address.internal && address.family === 'IPv4');
  for (const { address } of others) {
    const socket = connect(Number(url.port), address);
    const outcome = await new Promise((give) => {
      socket.once('connect', () => {
        give('connected');
      });
      socket.once('error', give);
    });
    socket.destroy();
    assert.notEqual(outcome, 'connected', address);
  }
});

test('when the desktop has ended, a frame says so', async (t) => {
  const { url, path } = await viewOf(t);
  rmSync(path);
  assert.equal((await get(new URL('frame', url))).status, 410);
});

test('pixels of another kind are refused and not guessed', async (t) => {
  const screen = screenOf(1, 2, 3);
  screen.writeUInt32BE(16, 11 * 4);
  for (const other of [screen, screen.subarray(0, 50), screenOf(1, 2, 3).subarray(0, 5000)]) {
    const { url } = await viewOf(t, other);
    assert.equal((await get(new URL('frame', url))).status, 410);
  }
});

test('a desktop without a file of its screen has no view', async () => {
  await assert.rejects(startView({ env: {} }), /nothing to show/);
});

test('stopping ends the page, also for those who look on', async (t) => {
  const { url, stop } = await viewOf(t);
  const number = (await get(new URL('frame', url))).headers['x-frame'];
  const waiting = get(new URL(`frame?after=${String(number)}`, url));
  const refused = assert.rejects(waiting);
  await pause(50);
  await stop();
  await refused;
  await assert.rejects(get(url));
});

const missing = chromium === undefined || spawnSync('Xvfb', ['-help']).error !== undefined;
const colouredWindow = `
import sys, gi
gi.require_version('Gtk', '3.0')
from gi.repository import Gtk
window = Gtk.Window()
style = Gtk.CssProvider()
style.load_from_data(b'window { background: #28c83c; }')
window.get_style_context().add_provider(style, 800)
window.fullscreen()
window.show_all()
Gtk.main()`;

test(
  'a real desktop is seen live in a real browser',
  { skip: missing ? 'needs Xvfb and Chromium' : false },
  async (t) => {
    const { env, stop } = await startPrivateDesktop('640x480');
    t.after(stop);
    const view = await startView({ env });
    t.after(() => view.stop());
    const tab = await Tab.open(t);
    await tab.go(view.url);
    const middle = `(() => {
      const [image, canvas] = [document.querySelector('img'), document.createElement('canvas')];
      canvas.getContext('2d').drawImage(image, 320, 400, 1, 1, 0, 0, 1, 1);
      return [image.naturalWidth, image.naturalHeight,
        ...canvas.getContext('2d').getImageData(0, 0, 1, 1).data.slice(0, 3)];
    })()`;
    spawn('/usr/bin/python3', ['-c', colouredWindow], { env, stdio: 'ignore' });
    let seen: number[] = [];
    for (let tries = 0; tries < 200 && (seen[3] ?? 0) < 190; tries += 1) {
      await pause(50);
      seen = await tab.value<number[]>(middle);
    }
    assertNear(seen, [640, 480, 0x28, 0xc8, 0x3c]);
    assert.equal(await tab.value("document.querySelector('#state').textContent"), 'live');
    await stop();
    for (let tries = 0; tries < 100; tries += 1) {
      await pause(50);
      if ((await tab.value("document.querySelector('#state').textContent")) === 'ended') {
        break;
      }
    }
    assert.equal(await tab.value("document.querySelector('#state').textContent"), 'ended');
    assert.deepEqual(
      tab.complaints.filter((text) => !text.includes('status of 410')),
      [],
    );
  },
);
