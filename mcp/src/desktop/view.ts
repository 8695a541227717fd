// A live page of a private desktop's screen, for the person to look on. It takes no input.
//
// Only this machine reaches it, only who knows the token in its address gets an answer, and only
// under its own name: a page elsewhere whose name was made to lead here sends another one.

import { createHash, randomBytes, timingSafeEqual } from 'node:crypto';
import { createServer, type IncomingMessage, type ServerResponse } from 'node:http';
import type { AddressInfo } from 'node:net';
import { setTimeout as pause } from 'node:timers/promises';
import sharp from 'sharp';
import { readScreen, type Frame } from './screen.js';
import { viewPage, viewPolicy } from './view_page.js';

export interface View {
  /** Where to look: the token is in it, so it is for the person alone. */
  url: string;
  stop: () => Promise<void>;
}

export interface ViewOptions {
  /** The environment of a private desktop. */
  env: Record<string, string>;
}

const pollMs = 100;
/** How long a browser waits for a change at most. */
const patienceMs = 10_000;
/** More than the tabs that a person opens. */
const maxConnections = 32;

/** Serves the screen on a port that the system chooses. Keeps no process alive. */
export async function startView({ env }: ViewOptions): Promise<View> {
  const path = env['TARQO_DESKTOP_SCREEN'];
  if (path === undefined) {
    throw new Error('This desktop keeps no file of its screen, so there is nothing to show.');
  }
  const token = randomBytes(24).toString('base64url');
  const screen = new LiveScreen(path);
  const server = createServer((request, response) => {
    const { port } = server.address() as AddressInfo;
    answer(request, response, { token, port, screen }).catch(() => {
      response.destroy();
    });
  });
  server.maxConnections = maxConnections;
  await new Promise<void>((ready, failed) => {
    server.once('error', failed).listen(0, '127.0.0.1', ready);
  });
  server.unref();
  const { port } = server.address() as AddressInfo;
  return {
    url: `http://127.0.0.1:${port}/${token}/`,
    stop: () =>
      new Promise((done) => {
        server.close(() => {
          done();
        });
        server.closeAllConnections();
      }),
  };
}

interface Site {
  token: string;
  port: number;
  screen: LiveScreen;
}

async function answer(
  request: IncomingMessage,
  response: ServerResponse,
  { token, port, screen }: Site,
): Promise<void> {
  const [path = '', query] = (request.url ?? '').split('?');
  const [, given, page] = path.split('/');
  const names = [`127.0.0.1:${port}`, `localhost:${port}`];
  for (const [name, value] of Object.entries(headers)) {
    response.setHeader(name, value);
  }
  if (!names.includes(request.headers.host ?? '') || !isSame(given ?? '', token)) {
    end(response, 403, 'This page is for the person who started the server.');
  } else if (request.method !== 'GET') {
    end(response, 405, 'This page is for looking only.');
  } else if (page === '') {
    response.setHeader('Content-Type', 'text/html; charset=utf-8');
    response.end(viewPage);
  } else if (page === 'frame') {
    await sendFrame(response, screen, Number(new URLSearchParams(query).get('after')));
  } else {
    end(response, 404, 'Nothing is here.');
  }
}

const headers = {
  'Cache-Control': 'no-store',
  'Content-Security-Policy': viewPolicy,
  'Cross-Origin-Opener-Policy': 'same-origin',
  'Cross-Origin-Resource-Policy': 'same-origin',
  'Referrer-Policy': 'no-referrer',
  'X-Content-Type-Options': 'nosniff',
  'X-Frame-Options': 'DENY',
};

/** 200 with a newer frame than `after`; 204 when the screen stayed as it is; 410 when it is gone. */
async function sendFrame(
  response: ServerResponse,
  screen: LiveScreen,
  after: number,
): Promise<void> {
  const deadline = performance.now() + patienceMs;
  try {
    while (!response.destroyed) {
      const shown = await screen.look();
      if (shown.number !== after) {
        response.setHeader('Content-Type', 'image/jpeg');
        response.setHeader('X-Frame', shown.number);
        response.end(await shown.jpeg());
        return;
      }
      if (performance.now() > deadline) {
        response.writeHead(204).end();
        return;
      }
      await pause(pollMs);
    }
  } catch {
    end(response, 410, 'The desktop has ended.');
  }
}

interface Shown {
  number: number;
  jpeg(): Promise<Buffer>;
}

/** Numbers what the screen shows, and encodes each only once, however many look on. */
class LiveScreen {
  private frame: Frame | undefined;
  private shown: Shown | undefined;
  private looking: Promise<Shown> | undefined;
  private lookedAt = -Infinity;
  private number = 0;

  constructor(private readonly path: string) {}

  /** What is there now, or was there less than a poll ago. */
  look(): Promise<Shown> {
    if (this.looking === undefined || performance.now() - this.lookedAt > pollMs / 2) {
      this.lookedAt = performance.now();
      this.looking = this.read();
    }
    return this.looking;
  }

  private async read(): Promise<Shown> {
    const frame = await readScreen(this.path);
    if (this.shown === undefined || this.frame?.pixels.equals(frame.pixels) !== true) {
      this.frame = frame;
      this.number += 1;
      let encoded: Promise<Buffer> | undefined;
      this.shown = { number: this.number, jpeg: () => (encoded ??= encode(frame)) };
    }
    return this.shown;
  }
}

function encode({ width, height, pixels }: Frame): Promise<Buffer> {
  return sharp(pixels, { raw: { width, height, channels: 4 } })
    .removeAlpha()
    .jpeg({ quality: 88, chromaSubsampling: '4:4:4' })
    .toBuffer();
}

function end(response: ServerResponse, status: number, text: string): void {
  response.writeHead(status, { 'Content-Type': 'text/plain; charset=utf-8' }).end(text + '\n');
}

/** Takes the same time whatever is given. */
function isSame(given: string, expected: string): boolean {
  const digest = (text: string) => createHash('sha256').update(text).digest();
  return timingSafeEqual(digest(given), digest(expected));
}
