// What a host sees before anything is called.

import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { describe, test } from 'node:test';

import { version } from '../src/version.js';
import { withSession } from './support/session.js';

describe('The list of tools', () => {
  for (const era of ['auto', 'legacy'] as const) {
    test(`takes less than 9 kB and says what each does to the desktop (${era})`, async () => {
      await withSession('notes_editor.json', { era }, async (session) => {
        const { tools } = await session.client.listTools();
        assert.ok(JSON.stringify({ tools }).length < 9000);
        const reading = tools.filter((tool) => tool.annotations?.readOnlyHint === true);
        assert.deepEqual(
          reading.map((tool) => tool.name),
          ['check_setup', 'list_apps', 'observe', 'find', 'wait_for'],
        );
        for (const tool of tools) {
          assert.match(tool.name, /^[A-Za-z0-9_-]+$/);
          assert.ok((tool.description ?? '').length > 20);
          assert.equal(tool.outputSchema, undefined);
        }
        const harmless = ['open_target', 'hover', 'open_menu', 'scroll'];
        for (const tool of tools.filter((one) => one.annotations?.readOnlyHint !== true)) {
          assert.equal(tool.annotations?.destructiveHint, !harmless.includes(tool.name), tool.name);
        }
        await session.call('open_target', { app: 'Notes', picture: false });
        assert.deepEqual((await session.client.listTools()).tools, tools, 'it stays the same');
      });
    });
  }

  test('comes from a server of the version of its package', () => {
    const text = readFileSync(new URL('../../package.json', import.meta.url), 'utf8');
    assert.equal((JSON.parse(text) as { version: string }).version, version);
  });
});
