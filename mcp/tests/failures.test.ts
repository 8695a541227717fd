// Every refusal that the helper knows reaches the model as a sentence that says what to do next.

import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { resolve } from 'node:path';
import { fileURLToPath } from 'node:url';
import { describe, test } from 'node:test';

import { adviceFor } from '../src/helper/failures.js';
import { fakeHelper, notes, sessionOf, sessionOver, type Session } from './support/session.js';

const save = { id: 'save', role: 'AXButton', title: 'Save', frame: [200, 200, 80, 24] };
const pointed = { ...save, actions: { AXPress: null } };
// The server asks for the host, the applications, the connection and the first look.
const afterTheLook = { requests: 4 };

function changed(what: Record<string, unknown>): Record<string, unknown> {
  return { changes: [{ after: afterTheLook, do: [what] }] };
}

const field = (more: Record<string, unknown>) => ({
  role: 'AXTextField',
  title: 'Name',
  frame: [200, 200, 200, 24],
  ...more,
});

interface Row {
  code: string;
  scene?: unknown;
  /** Instead of a scene: how the fake helper misbehaves. */
  fake?: [string, string];
  tool?: string;
  args?: Record<string, unknown>;
  /** The node to act on. */
  on?: string;
  app?: string;
  /** What the answer says instead of the code, where the call succeeds all the same. */
  note?: RegExp;
  before?: (session: Session) => Promise<void>;
}

const inFront = (notes([save]) as { applications: unknown[] }).applications;
const chat = { id: 'chat', frame: [150, 150, 400, 300], title: 'Chat' };
const terminal = {
  bundleId: 'com.example.Terminal',
  windows: [{ id: 'shell', frame: [1000, 700, 600, 300], title: 'zsh' }],
};
const openIt = 'open_target';
const picture = { tool: 'observe', args: {} };

const rows: Row[] = [
  { code: 'session_locked', scene: notes([save], { session: { locked: true } }), tool: openIt },
  {
    code: 'ax_not_trusted',
    scene: notes([save], { permissions: { accessibility: false } }),
    tool: openIt,
  },
  {
    code: 'screen_capture_denied',
    scene: notes([save], { permissions: { screenCapture: false } }),
    ...picture,
    note: /no picture: Screen Recording is not granted/,
  },
  {
    code: 'screen_capture_stale',
    scene: {
      applications: [...inFront, { bundleId: 'com.example.Terminal' }],
      host: { application: 'com.example.Terminal' },
      capture: { windowImages: 'fails' },
    },
    ...picture,
    note: /no picture: .*does not apply to the running build/,
  },
  {
    code: 'app_closed',
    scene: notes([save], changed({ quit: 'com.example.Notes' })),
    tool: 'click',
    on: 'Save',
  },
  { code: 'app_not_found', scene: notes([save]), tool: openIt, app: 'org.nowhere' },
  {
    code: 'app_not_running',
    scene: notes([save], { application: { front: false, running: false, launchMs: null } }),
    tool: openIt,
  },
  {
    code: 'launch_failed',
    scene: notes([save], { application: { front: false, running: false, launchError: 'broken' } }),
    tool: openIt,
  },
  {
    code: 'focus_failed',
    scene: {
      applications: [
        {
          bundleId: 'com.example.Notes',
          comesToFrontMs: null,
          windows: [{ frame: [100, 80, 800, 600], title: 'Shopping', nodes: [save] }],
        },
        { bundleId: 'com.example.Chat', front: true, windows: [{ frame: [950, 50, 300, 300] }] },
      ],
    },
    tool: 'click',
    on: 'Save',
  },
  { code: 'no_window', scene: notes([], { application: { windows: [] } }), tool: openIt },
  {
    code: 'window_not_visible',
    scene: notes([save], changed({ minimize: 'main' })),
    ...picture,
    note: /no picture: The target window is not shown/,
  },
  {
    code: 'window_covered',
    scene: {
      applications: [...inFront, { bundleId: 'com.example.Chat', windows: [chat] }],
      changes: [
        { after: afterTheLook, do: [{ raise: 'chat' }] },
        // The helper brings the window forward once; this one comes back.
        { after: { ...afterTheLook, ms: 200 }, do: [{ raise: 'chat' }] },
      ],
    },
    ...picture,
    note: /no picture: Another application's window is in front/,
  },
  {
    code: 'window_capture_failed',
    scene: {
      applications: [...inFront, terminal],
      host: { application: 'com.example.Terminal' },
      ...changed({
        desktop: { capture: { windowImagesOf: { main: 'fails' }, displayRegions: 'fails' } },
      }),
    },
    ...picture,
    note: /no picture: macOS could not capture/,
  },
  {
    code: 'image_encoding_failed',
    scene: notes([save], changed({ desktop: { capture: { encoding: 'fails' } } })),
    ...picture,
    note: /no picture: PNG encoding failed/,
  },
  {
    code: 'ocr_failed',
    scene: notes([], { recognizedText: { error: 'no language data' } }),
    tool: 'observe',
    args: { ocr: true },
  },
  {
    code: 'stale_snapshot',
    scene: notes([save], changed({ set: { node: 'save', title: 'Save As' } })),
    tool: 'click',
    on: 'Save',
  },
  {
    code: 'stale_target',
    scene: notes([field({ secure: true })]),
    tool: 'type_text',
    on: 'Name',
    args: { text: 'hunter2' },
  },
  {
    code: 'not_visible',
    scene: notes([save], changed({ set: { node: 'save', frame: null } })),
    tool: 'click',
    on: 'Save',
  },
  {
    code: 'not_clickable',
    scene: notes([{ ...save, enabled: false }]),
    tool: 'click',
    on: 'Save',
  },
  {
    code: 'target_covered',
    scene: notes(
      [pointed],
      changed({
        add: {
          to: 'main',
          nodes: [{ role: 'AXStaticText', value: 'Saved', frame: [190, 190, 100, 40] }],
        },
      }),
    ),
    tool: 'click',
    on: 'Save',
  },
  {
    code: 'target_busy',
    scene: notes([{ ...save, actions: { AXPress: { takesMs: 60000 } } }], {
      application: { hangsAtKeysInActions: true },
    }),
    before: async (session) => {
      const pressed = await session.call('click', { node: await session.handle('Save') });
      assert.match(pressed.text, /^unknown · clicked \d+ button "Save"/);
    },
    tool: 'press_key',
    on: 'Save',
    args: { key: 'Escape' },
  },
  {
    code: 'hit_test_failed',
    scene: notes(
      [pointed],
      changed({ application: { bundleId: 'com.example.Notes', refusesHitTest: true } }),
    ),
    tool: 'click',
    on: 'Save',
  },
  {
    code: 'input_unsupported',
    scene: notes([field({ editable: false })]),
    tool: 'type_text',
    on: 'Name',
    args: { text: 'Kim' },
  },
  {
    code: 'input_failed',
    scene: notes([field({ refusesSet: ['AXValue'] })]),
    tool: 'type_text',
    on: 'Name',
    args: { text: 'Kim' },
  },
  {
    code: 'invalid_argument',
    scene: notes([save]),
    tool: 'press_key',
    on: 'Save',
    args: { key: 'F13' },
  },
  { code: 'invalid_request', fake: ['', ''], tool: 'hover', on: 'Go' },
  { code: 'native_error', fake: ['connect', 'native-error'], tool: openIt },
];

function codesOfTheHelper(): string[] {
  const source = resolve(fileURLToPath(import.meta.url), '../../../../base/failure.cpp');
  const found = [...readFileSync(source, 'utf8').matchAll(/return "([a-z_]+)";/g)];
  return [...new Set(found.map((match) => match[1] ?? ''))].sort();
}

async function open(row: Row): Promise<Session> {
  return row.fake === undefined
    ? sessionOver(row.scene)
    : sessionOf([process.execPath, fakeHelper, ...row.fake]);
}

async function play(row: Row, session: Session) {
  const app = row.app ?? (row.fake === undefined ? 'com.example.Notes' : 'fake.app');
  if (row.tool === openIt) {
    return session.call(openIt, { app, picture: false });
  }
  const opened = await session.call(openIt, { app, picture: false });
  assert.ok(!opened.isError, opened.text);
  await row.before?.(session);
  const node = row.on === undefined ? {} : { node: await session.handle(row.on) };
  return session.call(row.tool ?? '', { ...node, ...row.args });
}

describe('A refusal of the helper', () => {
  test('is in this table and has advice, whatever its code', () => {
    assert.deepEqual([...new Set(rows.map((row) => row.code))].sort(), codesOfTheHelper());
    assert.deepEqual(Object.keys(adviceFor).sort(), codesOfTheHelper());
  });

  for (const row of rows) {
    test(`says what to do next: ${row.code}`, async () => {
      const session = await open(row);
      try {
        const answer = await play(row, session);
        if (row.note !== undefined) {
          assert.match(answer.text, row.note);
          assert.match(answer.text, /button "Save"/, 'the lines come without the picture');
          assert.equal(answer.isError, false);
          return;
        }
        assert.equal(answer.isError, true, answer.text);
        assert.match(answer.text, new RegExp(`^refused[^·]* · ${row.code} · .`), answer.text);
        assert.match(answer.text, /\nnext: .{10}/);
      } finally {
        await session.close();
      }
    });
  }
});
