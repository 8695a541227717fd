// The page that shows a private desktop's screen, and what a browser may do on it.

import { createHash } from 'node:crypto';

const style = `
:root { color-scheme: light dark; }
body { margin: 0; min-height: 100vh; display: flex; flex-direction: column; align-items: center;
  justify-content: center; gap: 8px; background: #1b1b1f; color: #e6e6ea; font: 15px/1.5 system-ui, sans-serif; }
h1 { margin: 0; font-size: 15px; font-weight: 400; }
img { display: block; max-width: 100vw; max-height: calc(100vh - 40px); }
`;

const script = `
'use strict';
const screen = document.querySelector('img');
const state = document.querySelector('#state');
const pause = (ms) => new Promise((done) => setTimeout(done, ms));

async function next(after) {
  const answer = await fetch('frame?after=' + after, { cache: 'no-store' });
  if (answer.status === 204) return after;
  if (!answer.ok) throw answer;
  const old = screen.src;
  screen.src = URL.createObjectURL(await answer.blob());
  if (old) URL.revokeObjectURL(old);
  return Number(answer.headers.get('X-Frame'));
}

async function watch() {
  for (let after = 0; ; ) {
    try {
      after = await next(after);
      state.textContent = 'live';
    } catch (problem) {
      if (problem.status === 410) {
        state.textContent = 'ended';
        return;
      }
      state.textContent = 'no connection';
      after = 0;
      await pause(1000);
    }
  }
}
watch();
`;

export const viewPolicy = [
  "default-src 'none'",
  'img-src blob: data:',
  "connect-src 'self'",
  `style-src '${hashOf(style)}'`,
  `script-src '${hashOf(script)}'`,
  "base-uri 'none'",
  "form-action 'none'",
  "frame-ancestors 'none'",
].join('; ');

export const viewPage = `<!doctype html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>The agent’s desktop</title>
<link rel="icon" href="data:,">
<style>${style}</style>
</head>
<body>
<main>
<h1>The agent’s desktop: <span id="state" role="status">connecting</span></h1>
<img alt="What the agent’s desktop shows">
</main>
<script>${script}</script>
</body>
</html>
`;

function hashOf(text: string): string {
  return `sha256-${createHash('sha256').update(text).digest('base64')}`;
}
