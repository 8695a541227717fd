// Each tool on a simulated desktop, by clients of both eras of the protocol.

import assert from 'node:assert/strict';
import { describe, test } from 'node:test';

import { notes, withSession, type Era, type Session } from './support/session.js';

const eras: Era[] = ['auto', 'legacy'];
const scene = 'notes_editor.json';

async function opened(session: Session): Promise<string> {
  const answer = await session.call('open_target', { app: 'notes', picture: false });
  assert.ok(!answer.isError, answer.text);
  return answer.tag;
}

for (const era of eras) {
  describe(`A client of the era "${era}"`, () => {
    test('opens an application by a part of its name and sees its window', async () => {
      await withSession(scene, { era }, async (session) => {
        const answer = await session.call('open_target', { app: 'notes' });
        assert.match(answer.text, /^open · "Notes" 4\.11 \(com\.example\.Notes\) as [a-z]{3}\n/);
        assert.match(answer.text, /\n 2 button "Save"\n/);
        assert.match(answer.text, /textbox "Note" = "Milk" focused/);
        assert.match(answer.text, /picture 800x600 px, scale 1/);
        assert.equal(answer.images.length, 1);
      });
    });

    test('clicks, and reads what changed in the same answer', async () => {
      await withSession(scene, { era }, async (session) => {
        await opened(session);
        const answer = await session.call('click', { node: await session.handle('Save') });
        assert.match(answer.text, /^done · clicked 2 button "Save"\n/);
        assert.match(answer.text, /\n~ 6 text "Saved" \(was "Edited"\)$/);
        assert.equal(answer.isError, false);
      });
    });

    test('types, presses keys, scrolls, hovers and opens menus', async () => {
      await withSession(scene, { era }, async (session) => {
        await opened(session);
        const on = () => session.handle('Note');
        const typed = await session.call('type_text', { node: await on(), text: 'Bread' });
        assert.match(typed.text, /^done · typed 5 characters into 5 textbox "Note"/);
        assert.match(typed.text, /= "Bread".*\(was = "Milk"\)/);
        const key = await session.call('press_key', { node: await on(), key: 'ctrl+A' });
        assert.match(key.text, /^done · pressed Control\+A on 5 textbox/);
        const scrolled = await session.call('scroll', { node: await on(), dy: 500 });
        assert.match(scrolled.text, /^done · scrolled 500 down on 5 textbox/);
        const save = () => session.handle('Save');
        const hovered = await session.call('hover', { node: await save() });
        assert.match(hovered.text, /^done · rested the pointer on 2 button/);
        const menu = await session.call('open_menu', { node: await save() });
        assert.match(menu.text, /^done · opened the menu of 2 button/);
      });
    });

    test('asks whether everything is there', async () => {
      await withSession(scene, { era }, async (session) => {
        const { text } = await session.call('check_setup');
        assert.match(text, /^ready: yes\ngrants go to: Terminal com\.example\.Terminal/);
        assert.match(text, /helper: .*tarqo-ax-sim .*\(named by --helper\), tarqo-ax \d/);
        assert.match(text, /screen: not locked/);
      });
    });
  });
}

describe('list_apps', () => {
  test('leaves the host of the server out, and filters by a word', async () => {
    await withSession(scene, {}, async (session) => {
      const all = await session.call('list_apps');
      assert.equal(
        all.text,
        '1 application; 1 more may not be used\ncom.example.Notes "Notes" running',
      );
      const none = await session.call('list_apps', { filter: 'chess' });
      assert.match(none.text, /^no application matches "chess"/);
    });
  });
});

describe('check_setup', () => {
  test('names the grant that is missing and who needs it', async () => {
    const untrusted = {
      host: { application: 'com.example.Terminal' },
      applications: [{ bundleId: 'com.example.Terminal' }],
      permissions: { accessibility: false },
    };
    await withSession(untrusted, {}, async (session) => {
      const { text } = await session.call('check_setup');
      assert.match(text, /^ready: NO\ngrants go to: Terminal/);
      assert.match(text, /accessibility: MISSING/);
      assert.match(text, /next: tell the user: Accessibility is not granted to Terminal/);
    });
  });

  test('says that the screen is locked', async () => {
    await withSession(notes([], { session: { locked: true } }), {}, async (session) => {
      const { text } = await session.call('check_setup');
      assert.match(text, /screen: LOCKED/);
      assert.match(text, /next: tell the user to unlock/);
    });
  });
});

describe('observe', () => {
  test('shows what is under a node, with its text whole', async () => {
    const long = 'word '.repeat(100).trim();
    const field = { role: 'AXTextArea', title: 'Note', value: long, frame: [120, 160, 700, 400] };
    await withSession(notes([field]), {}, async (session) => {
      const tag = await opened(session);
      const cut = await session.call('observe', { picture: 'none' });
      assert.ok(!cut.text.includes(long));
      const whole = await session.call('observe', { picture: 'none', under: `${tag}.2` });
      assert.ok(whole.text.includes(long), whole.text);
    });
  });

  test('reads recognised text where the window has none, and it can be clicked', async () => {
    await withSession('canvas.json', {}, async (session) => {
      const seen = await session.call('open_target', { app: 'com.example.Game' });
      assert.match(seen.text, /text "Start" recognized/);
      const clicked = await session.call('click', { node: await session.handle('Start') });
      assert.match(clicked.text, /^done · clicked \d+ text "Start" with the pointer/);
      assert.match(clicked.text, /"Level 1"/);
    });
  });

  test('says so when the application tells nothing of its window', async () => {
    await withSession(notes([]), {}, async (session) => {
      const answer = await session.call('open_target', { app: 'Notes', picture: false });
      assert.match(answer.text, /^\(the application tells nothing of what is in this window: /m);
    });
    await withSession(scene, {}, async (session) => {
      const answer = await session.call('open_target', { app: 'Notes', picture: false });
      assert.doesNotMatch(answer.text, /tells nothing/);
    });
  });

  test('wants to know which application when several are open', async () => {
    const two = {
      applications: ['Notes', 'Chat'].map((name) => ({
        bundleId: `com.example.${name}`,
        windows: [{ frame: [100, 80, 800, 600], title: name, nodes: [] }],
      })),
    };
    await withSession(two, {}, async (session) => {
      const first = await session.call('open_target', { app: 'Notes', picture: false });
      await session.call('open_target', { app: 'Chat', picture: false });
      const vague = await session.call('observe', { picture: 'none' });
      assert.match(vague.text, /^refused · ambiguous_target · Several applications are open/);
      const target = first.tag.slice(0, 3);
      const named = await session.call('observe', { picture: 'none', target });
      assert.match(named.text, /"Notes" window "Notes"/, named.text);
    });
  });
});

describe('wait_for', () => {
  const late = notes([{ id: 'state', role: 'AXStaticText', value: 'Loading' }], {
    changes: [{ after: { requests: 8 }, do: [{ set: { node: 'state', value: 'Ready' } }] }],
  });

  test('waits until a text appears', async () => {
    await withSession(late, {}, async (session) => {
      await opened(session);
      const answer = await session.call('wait_for', { text: 'ready' });
      assert.match(answer.text, /^done · "ready" is there after/);
      assert.match(answer.text, /~ \d+ text "Ready" \(was "Loading"\)/);
    });
  });

  test('waits until a text is gone', async () => {
    await withSession(late, {}, async (session) => {
      await opened(session);
      const answer = await session.call('wait_for', { text: 'loading', gone: true });
      assert.match(answer.text, /^done · "loading" is gone after/);
    });
  });

  test('gives up at its limit and says what there is', async () => {
    await withSession(late, {}, async (session) => {
      await opened(session);
      const answer = await session.call('wait_for', { text: 'never', timeout_ms: 200 });
      assert.match(answer.text, /^not met · "never" did not appear within 0\.\d s\nnext: /);
      assert.equal(answer.isError, true);
    });
  });

  test('waits until the window is quiet', async () => {
    await withSession(scene, {}, async (session) => {
      await opened(session);
      const answer = await session.call('wait_for', {});
      assert.match(answer.text, /^done · the window is quiet/);
    });
  });
});

describe('do_steps', () => {
  test('does several things in one call and shows what all of them changed', async () => {
    await withSession(scene, {}, async (session) => {
      const tag = await opened(session);
      const steps = [
        { do: 'type_text', node: `${tag}.5`, text: 'Eggs' },
        { do: 'click', find: 'Save', role: 'button' },
      ];
      const answer = await session.call('do_steps', { steps });
      assert.match(answer.text, /^2 of 2 steps done\n1 done · typed.*\n2 done · clicked 2 button/);
      assert.match(answer.text, /= "Eggs"/);
      assert.match(answer.text, /~ 6 text "Saved"/);
    });
  });

  test('stops when a window comes that was not expected', async () => {
    await withSession(scene, {}, async (session) => {
      const tag = await opened(session);
      const steps = [
        { do: 'click', node: `${tag}.3` },
        { do: 'click', node: `${tag}.2` },
      ];
      const answer = await session.call('do_steps', { steps });
      assert.match(answer.text, /^1 of 2 steps done, 1 not tried\n/);
      assert.match(answer.text, /stopped: another window came unexpectedly/);
      assert.match(answer.text, /window "Delete this note\?"/);
      assert.equal(answer.isError, true);
    });
  });

  test('goes on in a window that was expected', async () => {
    await withSession(scene, {}, async (session) => {
      const tag = await opened(session);
      const steps = [
        { do: 'click', node: `${tag}.3`, new_window: true },
        { do: 'click', find: 'Cancel', new_window: true },
        { do: 'click', node: `${tag}.2` },
      ];
      const answer = await session.call('do_steps', { steps });
      assert.match(answer.text, /^3 of 3 steps done\n/, answer.text);
      assert.match(answer.text, /text "Saved"/);
    });
  });

  test('stops at a name that is not there after a second look, which can be acted on', async () => {
    await withSession(scene, {}, async (session) => {
      await opened(session);
      const answer = await session.call('do_steps', { steps: [{ do: 'click', find: 'Nowhere' }] });
      assert.match(answer.text, /refused, nothing was sent · not_found/);
      assert.match((await session.call('click', { node: `${answer.tag}.2` })).text, /^done/);
    });
  });

  test('finds what has no name by the box that it is in, and says what else has the name', async () => {
    const frame = [120, 116, 200, 24];
    const field = { role: 'AXTextField', value: '', frame };
    const box = { role: 'AXPopUpButton', title: 'Search for:', frame, nodes: [field] };
    await withSession(notes([box]), {}, async (session) => {
      await opened(session);
      const type = { do: 'type_text', find: 'search for:', text: 'two' };
      const done = await session.call('do_steps', { steps: [{ ...type, role: 'textbox' }] });
      assert.match(done.text, /^1 of 1 steps done/, done.text);
      const none = await session.call('do_steps', { steps: [{ ...type, role: 'button' }] });
      assert.match(
        none.text,
        /there is no button "search for:", but \d+ popupbutton "Search for:"/,
      );
    });
  });

  test('waits a moment for a name that is about to be there', async () => {
    const button = (title: string, x: number) => ({
      role: 'AXButton',
      title,
      frame: [x, 120, 80, 24],
    });
    const bar = {
      id: 'bar',
      role: 'AXToolbar',
      frame: [100, 108, 800, 40],
      nodes: [button('Open', 120)],
    };
    // After the look that follows the first click.
    const after = { requests: 8 };
    const add = { to: 'bar', nodes: [button('Late', 300)] };
    const late = notes([bar], { changes: [{ after, do: [{ add }] }] });
    await withSession(late, {}, async (session) => {
      await opened(session);
      const steps = ['Open', 'Late'].map((find) => ({ do: 'click', find }));
      const answer = await session.call('do_steps', { steps });
      assert.match(answer.text, /^2 of 2 steps done/, answer.text);
    });
  });
});

describe('A handle', () => {
  test('is good for one action; after it the refusal brings the fresh lines', async () => {
    await withSession(scene, {}, async (session) => {
      const tag = await opened(session);
      await session.call('click', { node: `${tag}.2` });
      const again = await session.call('click', { node: `${tag}.2` });
      assert.match(
        again.text,
        /^refused · stale_observation · \w+ cannot be acted on: it was used/,
      );
      assert.match(again.text, /2 button "Save"/);
      assert.notEqual(again.tag, tag);
      assert.match((await session.call('click', { node: `${again.tag}.2` })).text, /^done/);
    });
  });

  test('of a conversation in between is never acted on', async () => {
    await withSession(scene, {}, async (session) => {
      const mine = await opened(session);
      const theirs = await session.call('observe', { picture: 'none' });
      const late = await session.call('click', { node: `${mine}.2` });
      assert.match(late.text, /stale_observation · .* the later look \w+ replaced it/);
      const void_ = await session.call('click', { node: `${theirs.tag}.2` });
      assert.match(void_.text, /stale_observation/, 'the look that repaired replaced theirs too');
    });
  });

  test('is void after a minute', async () => {
    await withSession(scene, {}, async (session) => {
      const tag = await opened(session);
      const observation = session.house.desk.observations.find(tag);
      assert.ok(observation !== undefined);
      observation.at -= 61_000;
      const late = await session.call('click', { node: `${tag}.2` });
      assert.match(
        late.text,
        /stale_observation · \w+ cannot be acted on: it is over a minute old/,
      );
      assert.match((await session.call('click', { node: `${late.tag}.2` })).text, /^done/);
    });
  });

  test('that may have been pressed before the pointer was refused is unknown', async () => {
    const save = {
      role: 'AXButton',
      title: 'Save',
      frame: [200, 200, 80, 24],
      actions: { AXPress: { do: [{ raise: 'chat' }] } },
    };
    const chat = { id: 'chat', owner: 'Chat', frame: [190, 190, 100, 44] };
    await withSession(notes([save], { otherWindows: [chat] }), {}, async (session) => {
      const tag = await opened(session);
      const answer = await session.call('click', { node: `${tag}.2` });
      assert.match(answer.text, /^unknown · clicked 2 button "Save": /);
      assert.match(answer.text, /Do not repeat it before you are sure/);
    });
  });

  test('that names no line is refused, and the look stays good', async () => {
    await withSession(scene, {}, async (session) => {
      const tag = await opened(session);
      const wrong = await session.call('click', { node: `${tag}.99` });
      assert.match(wrong.text, /unknown_node · \w+ has no line 99\. Nothing was done\./);
      assert.match((await session.call('click', { node: `${tag}.2` })).text, /^done/);
    });
  });

  test('keeps its number when a dialog comes and goes', async () => {
    await withSession(scene, {}, async (session) => {
      await opened(session);
      const before = await session.handle('Pinned');
      await session.call('click', { node: await session.handle('Delete') });
      await session.call('click', { node: await session.handle('Cancel') });
      const after = await session.handle('Pinned');
      assert.equal(after.split('.')[1], before.split('.')[1]);
    });
  });
});
