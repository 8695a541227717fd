import assert from 'node:assert/strict';
import { describe, test } from 'node:test';

import { differences } from '../../src/window/differences.js';
import { newTarget, observationOf, sameWindow } from '../../src/window/observation.js';

type Wire = Record<string, unknown>;

function lookerAt() {
  const target = newTarget('kfm', { bundleId: 'a.b', name: 'A' }, undefined);
  let count = 0;
  return (wires: Wire[], title = 'Notes', truncated = false) => {
    count++;
    // The helper numbers anew with every look.
    const id = (name: unknown) => (typeof name === 'string' ? `look${count}:${name}` : null);
    return observationOf(target, {
      at: 0,
      title,
      wires: wires.map((wire) => ({
        rawRole: wire['role'],
        ...wire,
        id: id(wire['id']),
        parentId: id(wire['parentId']),
      })),
      truncated,
    });
  };
}

const frame = { x: 0, y: 0, width: 100, height: 100 };
const window = (name = 'Notes'): Wire => ({
  id: 'w',
  parentId: null,
  role: 'window',
  name,
  bounds: frame,
});
const item = (id: string, name: string, more: Wire = {}): Wire => ({
  id,
  parentId: 'w',
  role: 'button',
  name,
  clickable: true,
  ...more,
});

function numberOf(look: ReturnType<ReturnType<typeof lookerAt>>, name: string): number {
  return [...look.byNumber.values()].find((node) => node.name === name)?.number ?? 0;
}

describe('An element that stays keeps its number', () => {
  test('when another one comes before it', () => {
    const look = lookerAt();
    const before = look([window(), item('a', 'Save'), item('b', 'Quit')]);
    const after = look([window(), item('x', 'New'), item('a', 'Save'), item('b', 'Quit')]);
    assert.equal(numberOf(after, 'Save'), numberOf(before, 'Save'));
    assert.equal(numberOf(after, 'Quit'), numberOf(before, 'Quit'));
    assert.ok(numberOf(after, 'New') > numberOf(before, 'Quit'));
  });

  test('when a row above it goes, told by what is in the row', () => {
    const rows = (names: string[]): Wire[] => [
      window(),
      ...names.flatMap((name) => [
        { id: `r${name}`, parentId: 'w', role: 'row', name: '' },
        { id: `t${name}`, parentId: `r${name}`, role: 'text', name },
        { id: `d${name}`, parentId: `r${name}`, role: 'button', name: 'Delete', clickable: true },
      ]),
    ];
    const look = lookerAt();
    const before = look(rows(['Ann', 'Bob', 'Cid']));
    const after = look(rows(['Bob', 'Cid']));
    const deleteOf = (seen: typeof before, name: string) =>
      [...seen.byNumber.values()]
        .find((node) => node.name === name)
        ?.parent?.children.find((node) => node.name === 'Delete')?.number;
    assert.equal(deleteOf(after, 'Bob'), deleteOf(before, 'Bob'));
    assert.equal(deleteOf(after, 'Cid'), deleteOf(before, 'Cid'));
    const found = differences(before, after);
    assert.deepEqual(
      found.removed.map(({ node }) => node.role),
      ['row'],
    );
    assert.equal(found.changed.length, 0);
  });

  test('when its text changes', () => {
    const look = lookerAt();
    const status = (name: string) => item('s', name, { role: 'text', clickable: false });
    const before = look([window(), status('Edited')]);
    const after = look([window(), status('Saved')]);
    assert.equal(numberOf(after, 'Saved'), numberOf(before, 'Edited'));
    assert.equal(differences(before, after).changed.length, 1);
  });

  test('when its window comes back from behind a dialog', () => {
    const look = lookerAt();
    const main = [window(), item('a', 'Save'), item('b', 'Quit')];
    const before = look(main);
    const dialog = look(
      [{ ...window('Sure?'), bounds: { ...frame, x: 20, width: 50 } }, item('y', 'Yes')],
      'Sure?',
    );
    const after = look(main);
    assert.equal(sameWindow(before, dialog), false);
    assert.equal(sameWindow(before, after), true);
    assert.equal(numberOf(after, 'Quit'), numberOf(before, 'Quit'));
  });
});

test('A look at an application that fell silent makes no number void', () => {
  const look = lookerAt();
  const main = [window(), item('a', 'Save'), item('b', 'Quit'), item('c', 'Print')];
  const before = look(main);
  const rest = look([window('')], '', true);
  assert.equal(rest.byNumber.size, 1);
  const after = look(main);
  assert.equal(numberOf(after, 'Quit'), numberOf(before, 'Quit'));
});

describe('Another button', () => {
  const at = (x: number): Wire => ({ bounds: { x, y: 0, width: 20, height: 20 } });

  test('gets a number of its own, though it is the only one before and after', () => {
    const look = lookerAt();
    const before = look([window(), item('a', 'Save', at(0))]);
    const after = look([window(), item('a', 'Delete', at(40))]);
    assert.notEqual(numberOf(after, 'Delete'), numberOf(before, 'Save'));
  });

  test('at the very place of one is that one, called something else', () => {
    const look = lookerAt();
    const before = look([window(), item('a', 'Play', at(0))]);
    const after = look([window(), item('a', 'Pause', at(0))]);
    assert.equal(numberOf(after, 'Pause'), numberOf(before, 'Play'));
    assert.equal(differences(before, after).changed[0]?.was.name, 'Play');
  });
});
