// Who may be used, how often, and what the user is asked about first.

import assert from 'node:assert/strict';
import { describe, test } from 'node:test';

import { AppRules } from '../../src/access/apps.js';
import { consequence } from '../../src/access/confirm.js';
import { RateLimit } from '../../src/access/rate.js';
import { Secrets } from '../../src/access/secrets.js';
import type { HelperTap } from '../../src/helper/tap.js';
import { notes, withSession } from '../support/session.js';

const scene = 'notes_editor.json';
const openNotes = { app: 'com.example.Notes', picture: false };

describe('An application', () => {
  const editor = { bundleId: 'org.gnome.TextEditor', name: 'Text Editor' };
  const keys = { bundleId: 'org.keepassxc.KeePassXC', name: 'KeePassXC' };

  test('may be used by default, unless it keeps passwords or launched the server', () => {
    const rules = new AppRules(undefined, []);
    rules.setHost({ bundleId: 'org.xfce.terminal', name: 'Terminal' });
    assert.equal(rules.refusal(editor), undefined);
    assert.match(rules.refusal(keys) ?? '', /keeps passwords/);
    assert.match(rules.refusal({ bundleId: 'org.xfce.terminal', name: 'x' }) ?? '', /launched/);
  });

  test('is refused by --deny even where --apps names it', () => {
    const rules = new AppRules(['text editor', 'KeePassXC'], ['org.gnome.texteditor']);
    assert.match(rules.refusal(editor) ?? '', /--deny/);
    assert.equal(rules.refusal(keys), undefined);
    assert.match(rules.refusal({ bundleId: 'a', name: 'b' }) ?? '', /not among --apps/);
  });

  test('that is not allowed is neither listed nor opened', async () => {
    await withSession(scene, { args: ['--apps', 'Other'] }, async (session) => {
      assert.match((await session.call('list_apps')).text, /^no application is there/);
      const refused = await session.call('open_target', openNotes);
      assert.match(
        refused.text,
        /^refused · app_denied · "Notes" may not be used: it is not among/,
      );
    });
  });
});

describe('A server that only reads', () => {
  test('has no acting tools, and brings nothing forward', async () => {
    await withSession(scene, { args: ['--read-only'] }, async (session) => {
      const { tools } = await session.client.listTools();
      assert.deepEqual(
        tools.map((tool) => tool.name),
        ['check_setup', 'list_apps', 'open_target', 'observe', 'find', 'wait_for'],
      );
      assert.ok(
        tools.every((tool) => tool.name === 'open_target' || tool.annotations?.readOnlyHint),
      );
      const opened = await session.call('open_target', openNotes);
      assert.match(opened.text, /button "Save"/);
    });
  });
});

describe('The rate limit', () => {
  test('lets a quarter through at once and refills with time', () => {
    let now = 0;
    const limit = new RateLimit(60, () => now);
    for (let count = 0; count < 15; count++) {
      limit.take();
    }
    assert.throws(() => {
      limit.take();
    }, /More than 60 calls a minute/);
    now += 1000;
    limit.take();
    assert.throws(() => {
      limit.take();
    });
  });
});

describe('A button that cannot be taken back', () => {
  test('is known by its name, in several languages', () => {
    const rows: [string, string | undefined][] = [
      ['Delete', 'deletes'],
      ['Move to Trash', 'deletes'],
      ['Send now', 'sends'],
      ['Pay 10 €', 'pays'],
      ['Place order', 'pays'],
      ['Löschen', 'deletes'],
      ['삭제', 'deletes'],
      ['메일 보내기', 'sends'],
      ['결제하기', 'pays'],
      ['Save', undefined],
      ['Cancel', undefined],
      ['Display settings', undefined],
      ['Resend', undefined],
    ];
    for (const [name, does] of rows) {
      assert.equal(consequence(name), does, name);
    }
  });

  for (const era of ['auto', 'legacy'] as const) {
    test(`is pressed when the user allows it, and not when not (${era})`, async () => {
      const asked: string[] = [];
      let allow = false;
      const user = (question: string) => {
        asked.push(question);
        return allow;
      };
      await withSession(scene, { era, args: ['--confirm'], user }, async (session) => {
        await session.call('open_target', openNotes);
        const save = await session.call('click', { node: await session.handle('Save') });
        assert.match(save.text, /^done/);
        assert.deepEqual(asked, []);
        const no = await session.call('click', { node: await session.handle('Delete') });
        assert.match(no.text, /^refused · declined · /);
        assert.deepEqual(asked, ['An agent is about to press "Delete", which deletes. Let it?']);
        allow = true;
        const yes = await session.call('click', { node: await session.handle('Delete') });
        assert.match(yes.text, /^done · clicked 3 button "Delete"/);
        const steps = [{ do: 'click', find: 'Delete' }];
        await session.call('do_steps', { steps });
        assert.equal(asked.length, 3);
      });
    });

    test(`is refused where the client cannot ask (${era})`, async () => {
      await withSession(scene, { era, args: ['--confirm'] }, async (session) => {
        await session.call('open_target', openNotes);
        const node = await session.handle('Delete');
        assert.match(
          (await session.call('click', { node })).text,
          /^refused · confirmation_needed/,
        );
        const key = await session.call('press_key', { node, key: 'Space' });
        assert.match(key.text, /^refused · confirmation_needed/);
        const steps = await session.call('do_steps', { steps: [{ do: 'click', node }] });
        assert.match(steps.text, /confirmation_needed/);
      });
    });
  }
});

describe('A secret', () => {
  const environment = {
    ...process.env,
    TARQO_SECRET_CARD: 'open "sesame"',
    OTHER: 'not for agents',
  };

  class Lines implements HelperTap {
    readonly lines: string[] = [];
    request(line: string): void {
      this.lines.push(line);
    }
    response(line: string): void {
      this.lines.push(line);
    }
    started(): void {
      this.lines.push('started');
    }
    ended(): void {
      this.lines.push('ended');
    }
  }

  test('is typed without being seen, in the answers and in what is recorded', async () => {
    const tap = new Lines();
    const field = { role: 'AXTextField', title: 'Card', frame: [200, 200, 200, 24] };
    await withSession(notes([field]), { environment, tap }, async (session) => {
      await session.call('open_target', openNotes);
      const node = await session.handle('Card');
      const typed = await session.call('type_text', { node, secret: 'TARQO_SECRET_CARD' });
      assert.match(typed.text, /^done · typed TARQO_SECRET_CARD into \d+ textbox "Card"/);
      assert.match(typed.text, /= "••••"/);
      assert.ok(!typed.text.includes('sesame'));
    });
    const recorded = tap.lines.join('\n');
    assert.match(recorded, /"kind":"type","text":"••••"/);
    assert.ok(!recorded.includes('sesame'));
    assert.equal(tap.lines[0], 'started');
    assert.equal(tap.lines.at(-1), 'ended');
  });

  test('that was not given to this server is not typed', async () => {
    await withSession(notes([]), { environment }, async (session) => {
      const { tag } = await session.call('open_target', openNotes);
      const typed = await session.call('type_text', { node: `${tag}.1`, secret: 'OTHER' });
      assert.match(typed.text, /^refused · unknown_secret · .* there are: TARQO_SECRET_CARD\./);
    });
  });

  test('typed into a password field is hidden from then on', async () => {
    const tap = new Lines();
    const field = {
      role: 'AXTextField',
      title: 'Password',
      secure: true,
      frame: [200, 200, 200, 24],
    };
    await withSession(notes([field]), { tap }, async (session) => {
      await session.call('open_target', openNotes);
      const node = await session.handle('Password');
      const typed = await session.call('type_text', { node, text: 'hunter2' });
      assert.match(typed.text, /^refused, nothing was sent · stale_target/);
    });
    assert.ok(!tap.lines.join('\n').includes('hunter2'));
  });

  test('is taken out of a line of JSON however it is escaped', () => {
    const secrets = new Secrets({ TARQO_SECRET_A: 'a"b/é' }, []);
    assert.equal(secrets.redactLine('{"x":["a\\"b\\/\\u00e9!"]}'), '{"x":["••••!"]}');
  });
});
