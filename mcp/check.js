// What `npm run check` proves: format, types, lint. The types are worked out once, for the compiler
// and for the lint rules that ask for them, and what the tests run is written on the way.
//
// The outcome depends on nothing but the files that are read here, so it is remembered: as long as
// none of them differs, nothing is checked again. `node check.js --anew` checks all the same.

import { spawnSync } from 'node:child_process';
import { createHash } from 'node:crypto';
import { mkdirSync, readdirSync, readFileSync, rmSync, writeFileSync } from 'node:fs';

import { ESLint } from 'eslint';
import ts from 'typescript';

const remembered = 'build/.checked';

/** Of everything that is checked, and of what checks it. */
function sum() {
  const hash = createHash('sha256').update(process.version);
  const folders = ['src', 'tests', 'bench'];
  const inside = folders.flatMap((folder) =>
    readdirSync(folder, { recursive: true, withFileTypes: true })
      .filter((entry) => entry.isFile())
      .map((entry) => `${entry.parentPath}/${entry.name}`),
  );
  const beside = readdirSync('.', { withFileTypes: true })
    .filter((entry) => entry.isFile())
    .map((entry) => entry.name);
  for (const file of [...inside, ...beside, 'node_modules/.package-lock.json'].sort()) {
    hash.update(`\0${file}\0`).update(readFileSync(file));
  }
  return hash.digest('hex');
}

/** What was remembered; empty when nothing was. */
function read(file) {
  try {
    return readFileSync(file, 'utf8');
  } catch {
    return '';
  }
}

function isFormatted() {
  const cache = ['--cache', '--cache-strategy=content', '--cache-location=build/.prettier'];
  const args = ['--no-install', 'prettier', '--check', '--log-level=warn', ...cache, '.'];
  return spawnSync('npx', args, { stdio: 'inherit' }).status === 0;
}

/** The program when its types fit; undefined, with the reasons on standard error, when they do not. */
function compiled() {
  const host = { ...ts.sys, onUnRecoverableConfigFileDiagnostic: (one) => report([one]) };
  const config = ts.getParsedCommandLineOfConfigFile('tsconfig.json', {}, host);
  const builder = ts.createIncrementalProgram({
    rootNames: config.fileNames,
    options: config.options,
    configFileParsingDiagnostics: ts.getConfigFileParsingDiagnostics(config),
  });
  const found = [
    ...builder.getConfigFileParsingDiagnostics(),
    ...builder.getOptionsDiagnostics(),
    ...builder.getSyntacticDiagnostics(),
    ...builder.getGlobalDiagnostics(),
    ...builder.getSemanticDiagnostics(),
  ];
  report(found);
  builder.emit();
  return found.length === 0 ? builder.getProgram() : undefined;
}

function report(diagnostics) {
  const host = ts.createCompilerHost({});
  process.stderr.write(ts.formatDiagnosticsWithColorAndContext(diagnostics, host));
}

async function isClean(program) {
  const parserOptions = { programs: [program] };
  const files = ['src/**', 'tests/**', 'bench/**'];
  const eslint = new ESLint({ overrideConfig: { files, languageOptions: { parserOptions } } });
  const results = await eslint.lintFiles(['.']);
  const { format } = await eslint.loadFormatter();
  process.stdout.write(await format(results));
  return results.every((one) => one.errorCount === 0 && one.warningCount === 0);
}

const now = sum();
if (process.argv[2] === '--anew' || read(remembered) !== now) {
  mkdirSync('build', { recursive: true });
  rmSync(remembered, { force: true });
  const formatted = isFormatted();
  const program = compiled();
  if (program !== undefined && (await isClean(program)) && formatted) {
    writeFileSync(remembered, now);
  } else {
    process.exitCode = 1;
  }
}
