// A helper that crashes, hangs or talks nonsense is replaced, and nothing of it is used any more.

import assert from 'node:assert/strict';
import { describe, test } from 'node:test';

import { fakeHelper, sessionOf, type Session } from './support/session.js';

const answerMs = 400;

async function withFake(
  method: string,
  how: string,
  body: (session: Session) => Promise<void>,
): Promise<void> {
  const session = await sessionOf([process.execPath, fakeHelper, method, how], {
    // Starting Node takes longer than an answer.
    answerMs: how === 'hang' ? 3000 : 20_000,
  });
  try {
    await body(session);
  } finally {
    await session.close();
  }
}

const open = (session: Session) => session.call('open_target', { app: 'fake.app', picture: false });

describe('A click', () => {
  for (const how of [
    'crash',
    'half',
    'nonsense',
    'array',
    'other-id',
    'neither',
    'endless',
    'hang',
  ]) {
    test(`is unknown when the helper answers it with: ${how}`, async () => {
      await withFake('click', how, async (session) => {
        const { tag } = await open(session);
        const first = session.house.desk.link.pid;
        const answer = await session.call('click', { node: `${tag}.2` });
        assert.match(answer.text, /^unknown · clicked 2 button "Go": The helper /);
        assert.match(answer.text, /Do not repeat it before you are sure/);
        assert.match(answer.text, /button "Stop"/, 'the next helper has looked already');
        assert.equal(answer.isError, true);
        assert.notEqual(session.house.desk.link.pid, first);
        const stale = await session.call('click', { node: `${tag}.3` });
        assert.match(stale.text, /^refused · stale_observation · /);
      });
    });
  }

  test('is unknown when only a part of it went out', async () => {
    await withFake('input', 'partial', async (session) => {
      const { tag } = await open(session);
      const answer = await session.call('type_text', { node: `${tag}.2`, text: 'hello' });
      assert.match(
        answer.text,
        /^unknown · typed 5 characters into .*: only "hel" went out, then:/,
      );
    });
  });

  test('is unknown after an error without a name', async () => {
    await withFake('click', 'native-error', async (session) => {
      const { tag } = await open(session);
      const answer = await session.call('click', { node: `${tag}.2` });
      assert.match(answer.text, /^unknown · clicked 2 button "Go": odd/);
    });
  });
});

describe('A look', () => {
  for (const how of ['crash', 'nonsense', 'half']) {
    test(`is refused when the helper answers it with: ${how}`, async () => {
      await withFake('observe', how, async (session) => {
        const answer = await open(session);
        assert.match(answer.text, /^refused · helper_lost · The helper .* It is replaced;/);
        assert.match(answer.text, /\nnext: observe/);
      });
    });
  }

  test('tells what the helper said before it ended', async () => {
    await withFake('observe', 'crash', async (session) => {
      assert.match((await open(session)).text, /ended \(status 7\)\. It said: out of cheese/);
    });
  });

  test('survives an answer whose members have wrong types', async () => {
    await withFake('observe', 'wrong-types', async (session) => {
      const answer = await session.call('open_target', { app: 'fake.app' });
      assert.equal(answer.isError, false, answer.text);
      assert.match(answer.text, /· 1 nodes/);
    });
  });
});

describe('A helper that is not there', () => {
  test('is told by every tool, with what was tried', async () => {
    const session = await sessionOf(['/nowhere/tarqo-ax'], { answerMs });
    try {
      assert.match((await session.call('check_setup')).text, /^ready: NO\nhelper does not work: /);
      assert.match(
        (await session.call('list_apps')).text,
        /^refused · helper_lost · The helper could not be started \(\/nowhere\/tarqo-ax\)/,
      );
    } finally {
      await session.close();
    }
  });
});

describe('A call', () => {
  test('that was cancelled before its turn does nothing', async () => {
    await withFake('click', 'hang', async (session) => {
      const { tag } = await open(session);
      const held = session.house.desk.queue.run(
        new AbortController().signal,
        () => new Promise((resolve) => setTimeout(resolve, 300)),
      );
      const controller = new AbortController();
      const click = session.call('click', { node: `${tag}.2` }, { signal: controller.signal });
      controller.abort();
      await assert.rejects(click);
      await held;
      // It would hang had it been sent, and the handle would be void.
      const { observation } = session.house.desk.handles.actable(`${tag}.2`);
      assert.equal(observation.ended, undefined);
    });
  });

  test('that takes long tells of its progress once a second', async () => {
    await withFake('click', 'hang', async (session) => {
      const { tag } = await open(session);
      let told = 0;
      await session.call('click', { node: `${tag}.2` }, { onprogress: () => told++ });
      assert.ok(told >= 2 && told <= 5, `${told} times in 3 s and a little`);
    });
  });
});
