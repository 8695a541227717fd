// A real Chromium for tests, without a window, driven over its debugging pipe.

import { spawn, type ChildProcess } from 'node:child_process';
import { once } from 'node:events';
import { existsSync, mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import type { TestContext } from 'node:test';
import { setTimeout as pause } from 'node:timers/promises';
import type { Readable, Writable } from 'node:stream';

const candidates = ['/usr/bin/chromium', '/usr/bin/chromium-browser', '/usr/bin/google-chrome'];
export const chromium =
  process.env['TARQO_CHROMIUM'] ?? candidates.find((path) => existsSync(path));

/** Nothing takes this long, even on a machine that builds meanwhile. */
const answerMs = 30_000;

interface Reply {
  id?: number;
  method?: string;
  params?: Record<string, unknown>;
  result?: Record<string, unknown>;
  error?: { message: string };
}

/** One tab. What its console and its network say is kept. */
export class Tab {
  /** Errors and warnings of the page: its console, its policy, exceptions nobody caught. */
  readonly complaints: string[] = [];
  /** Every address that was asked for. */
  readonly requests: string[] = [];

  private readonly waiting = new Map<number, (reply: Reply) => void>();
  private lastId = 0;
  private session = '';
  private buffered = '';

  private constructor(
    private readonly child: ChildProcess,
    private readonly toBrowser: Writable,
    fromBrowser: Readable,
  ) {
    fromBrowser.setEncoding('utf8').on('data', (text: string) => {
      const messages = (this.buffered + text).split('\0');
      this.buffered = messages.pop() ?? '';
      messages.forEach((message) => {
        this.hear(JSON.parse(message) as Reply);
      });
    });
  }

  static async open(
    t: TestContext,
    { width = 1280, height = 800, dark = false } = {},
  ): Promise<Tab> {
    const profile = mkdtempSync(join(tmpdir(), 'tarqo-mcp-test-'));
    const child = spawn(
      chromium ?? 'chromium',
      ['--headless=new', '--no-sandbox', '--remote-debugging-pipe', '--no-first-run'].concat(
        ['--disable-gpu', '--disable-background-networking', `--user-data-dir=${profile}`],
        [`--window-size=${width},${height}`, 'about:blank'],
      ),
      { stdio: ['ignore', 'ignore', 'ignore', 'pipe', 'pipe'] },
    );
    const tab = new Tab(child, child.stdio[3] as Writable, child.stdio[4] as Readable);
    // Of hooks that are run one after the other the first that fails is the last: a browser that is
    // still writing into a folder that goes would be left running, and the test with it.
    t.after(async () => {
      await tab.close();
      rmSync(profile, { recursive: true, force: true, maxRetries: 5 });
    });
    // One of its own: the first tab may still be changing.
    const { targetId } = await tab.ask('Target.createTarget', { url: 'about:blank' });
    const attached = await tab.ask('Target.attachToTarget', { targetId, flatten: true });
    tab.session = String(attached['sessionId']);
    for (const domain of ['Page', 'Runtime', 'Log', 'Network']) {
      await tab.ask(`${domain}.enable`);
    }
    const features = [{ name: 'prefers-color-scheme', value: dark ? 'dark' : 'light' }];
    await tab.ask('Emulation.setEmulatedMedia', { features });
    const metrics = { width, height, deviceScaleFactor: 1, mobile: false };
    await tab.ask('Emulation.setDeviceMetricsOverride', metrics);
    return tab;
  }

  async go(url: string): Promise<void> {
    await this.ask('Page.navigate', { url });
    const there = `location.href.startsWith(${JSON.stringify(url)}) && document.readyState === 'complete'`;
    for (const deadline = Date.now() + answerMs; !(await this.value<boolean>(there));) {
      if (Date.now() > deadline) {
        throw new Error(`${url} was not loaded within ${answerMs} ms`);
      }
      await pause(20);
    }
  }

  /** The value of an expression in the page, promises awaited. */
  async value<T>(expression: string): Promise<T> {
    const asked = { expression, awaitPromise: true, returnByValue: true };
    const reply = await this.ask('Runtime.evaluate', asked);
    if (reply['exceptionDetails'] !== undefined) {
      throw new Error(JSON.stringify(reply['exceptionDetails']));
    }
    return (reply['result'] as { value: T }).value;
  }

  async press(key: string): Promise<void> {
    const text = key.length === 1 ? { text: key } : {};
    await this.ask('Input.dispatchKeyEvent', { type: 'keyDown', key, ...text });
    await this.ask('Input.dispatchKeyEvent', { type: 'keyUp', key });
  }

  /** A picture of the tab, PNG. */
  async picture(): Promise<Buffer> {
    const reply = await this.ask('Page.captureScreenshot', { format: 'png' });
    return Buffer.from(String(reply['data']), 'base64');
  }

  private async close(): Promise<void> {
    if (this.child.exitCode === null && this.child.signalCode === null) {
      const gone = once(this.child, 'exit');
      this.child.kill('SIGKILL');
      await gone;
    }
  }

  private async ask(method: string, params: object = {}): Promise<Record<string, unknown>> {
    this.lastId += 1;
    const id = this.lastId;
    const session = this.session === '' ? {} : { sessionId: this.session };
    const reply = new Promise<Reply>((resolve, reject) => {
      const late = setTimeout(() => {
        reject(new Error(`no answer to ${method} within ${answerMs} ms`));
      }, answerMs);
      this.waiting.set(id, (answer) => {
        clearTimeout(late);
        resolve(answer);
      });
    });
    this.toBrowser.write(JSON.stringify({ id, method, params, ...session }) + '\0');
    const { result, error } = await reply;
    if (error !== undefined) {
      throw new Error(`${method}: ${error.message}`);
    }
    return result ?? {};
  }

  private hear(message: Reply): void {
    if (message.id !== undefined) {
      this.waiting.get(message.id)?.(message);
      this.waiting.delete(message.id);
      return;
    }
    const { method = '', params = {} } = message;
    if (method === 'Network.requestWillBeSent') {
      this.requests.push((params['request'] as { url: string }).url);
    } else if (method === 'Runtime.exceptionThrown' || method === 'Log.entryAdded') {
      this.complaints.push(JSON.stringify(params));
    } else if (method === 'Runtime.consoleAPICalled') {
      this.complaints.push(JSON.stringify(params));
    }
  }
}
