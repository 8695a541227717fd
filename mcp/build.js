// Puts the sources and what they use into a few files that Node reads fast: a server that is started
// for every conversation must answer at once. sharp stays outside, since it is a library of the system.

import { copyFileSync, mkdirSync, readdirSync, rmSync } from 'node:fs';

import { build } from 'esbuild';

rmSync('dist', { recursive: true, force: true });
const { metafile } = await build({
  metafile: true,
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

// The licences of what is in the files now want to come with it.
const libraries = new Set(
  Object.keys(metafile.inputs).flatMap(
    (path) => /.*node_modules\/(?:@[^/]+\/)?[^/]+/.exec(path)?.[0] ?? [],
  ),
);
for (const library of libraries) {
  const folder = `dist/licenses/${library.replace(/.*node_modules\//, '').replace('/', '-')}`;
  const texts = readdirSync(library).filter((name) => /^(licen[cs]e|notice)/i.test(name));
  if (texts.length === 0) {
    throw new Error(`${library} has no licence beside it`);
  }
  mkdirSync(folder, { recursive: true });
  texts.forEach((name) => copyFileSync(`${library}/${name}`, `${folder}/${name}`));
}
