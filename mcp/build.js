// Puts the sources and what they use into a few files that Node reads fast: a server that is started
// for every conversation must answer at once. sharp stays outside, since it is a library of the system.

import { copyFileSync, rmSync } from 'node:fs';

import { build } from 'esbuild';

rmSync('dist', { recursive: true, force: true });
await build({
  entryPoints: ['src/main.ts'],
  outdir: 'dist',
  bundle: true,
  splitting: true,
  format: 'esm',
  platform: 'node',
  target: 'node20',
  external: ['sharp'],
  minifySyntax: true,
  minifyWhitespace: true,
  legalComments: 'linked',
  // What was written for require finds it.
  banner: {
    js: "import{createRequire as tarqoRequire}from'node:module';const require=tarqoRequire(import.meta.url);",
  },
});

// For --private-desktop.
copyFileSync('../script/desktop', 'dist/desktop');
