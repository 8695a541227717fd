import js from '@eslint/js';
import { defineConfig } from 'eslint/config';
import ts from 'typescript-eslint';

export default defineConfig(
  { ignores: ['build/', 'dist/'] },
  js.configs.recommended,
  ts.configs.strictTypeChecked,
  ts.configs.stylisticTypeChecked,
  {
    languageOptions: {
      // check.js hands over the program that it has.
      parserOptions: { project: './tsconfig.json' },
    },
    rules: {
      'max-lines': ['error', { max: 400 }],
      'max-lines-per-function': ['error', { max: 60 }],
      // Numbers read well in a text; everything else is converted by hand.
      '@typescript-eslint/restrict-template-expressions': ['error', { allowNumber: true }],
    },
  },
  {
    // They are no part of the program.
    files: ['*.js'],
    extends: [ts.configs.disableTypeChecked],
    languageOptions: { globals: { process: 'readonly' } },
  },
  {
    // `describe` and `test` take whole suites, and their promises are node's own to await.
    files: ['tests/**'],
    rules: {
      'max-lines-per-function': 'off',
      '@typescript-eslint/no-floating-promises': [
        'error',
        {
          allowForKnownSafeCalls: [
            { from: 'package', package: 'node:test', name: ['test', 'describe', 'it', 'suite'] },
          ],
        },
      ],
    },
  },
);
