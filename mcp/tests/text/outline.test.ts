import assert from 'node:assert/strict';
import { describe, test } from 'node:test';

import { changes } from '../../src/text/changes.js';
import { outline } from '../../src/text/outline.js';
import { differences } from '../../src/window/differences.js';
import { everyNode, readTree } from '../../src/window/node.js';
import { newTarget, observationOf, sameWindow } from '../../src/window/observation.js';
import { randomFrom, randomWires } from '../support/random_tree.js';

const trees = Number(process.env['TARQO_TREES'] ?? 20_000);

function looked(wires: Record<string, unknown>[]) {
  const target = newTarget('kfm', { bundleId: 'a.b', name: 'A' }, undefined);
  const look = (nodes: readonly unknown[]) =>
    observationOf(target, { at: 0, title: 'T', wires: nodes, truncated: false });
  return { look, observation: look(wires) };
}

describe('An outline', () => {
  test(`never exceeds its budget, and accounts for every node (${trees} trees)`, () => {
    const random = randomFrom(4711);
    for (let tree = 0; tree < trees; tree++) {
      const { observation } = looked(randomWires(random, tree % 50 === 0 ? 400 : 30));
      const budget = 60 + Math.floor(random() * (tree % 50 === 0 ? 20_000 : 1200));
      const { tag, roots, byNumber } = observation;
      const found = outline({ roots, tag, budget });
      assert.ok(found.text.length <= budget, `tree ${tree}: ${found.text.length} > ${budget}`);
      assert.equal(found.shown + found.cut, byNumber.size, `tree ${tree}`);
      const counted = [...found.text.matchAll(/^ *\+(\d+) (?:under|more in) kfm1/gm)];
      const noted = counted.reduce((total, match) => total + Number(match[1]), 0);
      assert.equal(noted, found.cut, `tree ${tree}: what is cut is said\n${found.text}`);
      assert.ok(found.text.isWellFormed());
    }
  });

  test('of a window that fits is whole', () => {
    const { observation } = looked(randomWires(randomFrom(1), 50));
    const { roots, tag, byNumber } = observation;
    const { shown, cut } = outline({ roots, tag, budget: 100_000 });
    assert.deepEqual({ shown, cut }, { shown: byNumber.size, cut: 0 });
  });

  const wire = (number: number, more: Record<string, unknown>) => ({
    id: `s:${number}`,
    parentId: number === 0 ? null : 's:0',
    role: 'text',
    rawRole: 'AXStaticText',
    name: `text number ${number}`,
    enabled: true,
    bounds: { x: 10, y: number, width: 50, height: 20 },
    ...more,
  });

  test('shows dialogs, the focus and what can be acted on first', () => {
    const wires = [
      wire(0, { role: 'window', bounds: { x: 0, y: 0, width: 500, height: 500 } }),
      ...Array.from({ length: 50 }, (_, index) => wire(index + 1, {})),
      wire(60, { role: 'button', name: 'Press', clickable: true }),
      wire(61, { role: 'textbox', name: 'Focus', focused: true }),
      wire(62, { role: 'dialog', name: 'Sure?' }),
    ];
    const { roots, tag, bounds } = looked(wires).observation;
    const { text } = outline({ roots, tag, budget: 230, view: bounds });
    for (const expected of [/button "Press"/, /textbox "Focus" focused/, /dialog "Sure\?"/]) {
      assert.match(text, expected);
    }
    assert.match(text, /\+4\d under kfm1\.1/);
  });

  test('leaves out what says nothing and what repeats its parent', () => {
    const wires = [
      wire(0, { role: 'window', name: 'W' }),
      wire(1, { role: 'group', name: '' }),
      wire(2, { parentId: 's:1', role: 'button', name: 'Save', clickable: true }),
      wire(3, { parentId: 's:2', name: 'Save' }),
    ];
    const { roots, tag } = looked(wires).observation;
    assert.equal(outline({ roots, tag, budget: 500 }).text, '1 window "W"\n 2 button "Save"');
  });
});

describe('The lines of what changed', () => {
  test(`never exceed their budget (${trees / 20} pairs of trees)`, () => {
    const random = randomFrom(99);
    for (let tree = 0; tree < trees / 20; tree++) {
      const wires = randomWires(random, 40);
      const { look, observation } = looked(wires);
      const other = wires.filter(() => random() < 0.9);
      for (const node of other) {
        if (random() < 0.3) {
          node['value'] = 'changed';
        }
      }
      const after = look(other);
      if (!sameWindow(observation, after)) {
        continue;
      }
      const budget = 100 + Math.floor(random() * 1000);
      const text = changes(differences(observation, after), after, budget);
      assert.ok(text.length <= budget, `tree ${tree}: ${text.length} > ${budget}\n${text}`);
    }
  });
});

describe('What changed is told', () => {
  const node = (id: string, role: string, name: string, parentId: string | null = 'w') => ({
    id,
    parentId,
    role,
    rawRole: `AX${role}`,
    name,
    clickable: role === 'menuitem',
  });
  const window = node('w', 'window', 'Files', null);
  const told = (before: Record<string, unknown>[], now: Record<string, unknown>[]) => {
    const { look, observation } = looked(before);
    const after = look(now);
    return changes(differences(observation, after), after, 2000);
  };

  test('once for all that came to one place, in its order', () => {
    const menu = [
      node('a', 'menuitem', 'Cut'),
      { ...node('b', 'menuitem', 'Paste'), clickable: false, enabled: false },
      node('c', 'menuitem', 'Rename'),
    ];
    assert.equal(
      told([window], [window, ...menu]),
      '+ in 1 window "Files"\n  2 menuitem "Cut"\n  3 menuitem "Paste" disabled\n  4 menuitem "Rename"',
    );
  });

  test('without what only got another place', () => {
    const row = node('r', 'cell', 'draft.txt');
    const table = { ...node('t', 'table', ''), focused: true };
    const within = { ...row, parentId: 't' };
    const other = node('o', 'cell', 'final.txt', 't');
    assert.equal(told([window, table, within], [window, row]), '');
    assert.equal(
      told([window, row], [window, table, within, other]),
      'focus is on 3 table\n+ 3 table focused (in 1 window "Files")\n   4 cell "final.txt"',
    );
  });

  test('as the content of a text field, not as its name', () => {
    const field = (name: string) => ({
      ...node('f', 'textbox', name),
      value: name,
      editable: true,
      bounds: { x: 0, y: 0, width: 90, height: 20 },
    });
    assert.equal(
      told([window, field('')], [window, field('one')]),
      '~ 2 textbox = "one" (was empty)',
    );
    assert.equal(
      told([window, field('one')], [window, field('two')]),
      '~ 2 textbox = "two" (was = "one")',
    );
  });

  test('with how much is gone, not what stays elsewhere', () => {
    const panel = node('p', 'group', 'Panel');
    const inside = ['Ann', 'Bob'].map((name) => node(name, 'cell', name, 'p'));
    const stays = node('s', 'cell', 'Cid', 'p');
    assert.equal(
      told([window, panel, ...inside, stays], [window, { ...stays, parentId: 'w' }]),
      '- 2 group "Panel" and 2 below it',
    );
  });
});

describe('A tree', () => {
  test('has its focus at the innermost of those that are said to have it', () => {
    const focused = { role: 'cell', rawRole: 'AXCell', focused: true };
    const { observation } = looked([
      { id: 'w', parentId: null, role: 'window', name: 'W' },
      { ...focused, id: 'a', parentId: 'w' },
      { ...focused, id: 'b', parentId: 'a', name: 'draft.txt' },
    ]);
    const { roots, tag } = observation;
    const lines = '1 window "W"\n 2 cell "draft.txt" focused';
    assert.equal(outline({ roots, tag, budget: 500 }).text, lines);
  });

  test('that is no tree is made one', () => {
    const loop = [
      { id: 'a', parentId: 'b', role: 'button', name: 'A' },
      { id: 'b', parentId: 'a', role: 'button', name: 'B' },
      { id: 'b', parentId: 'b', role: 'button', name: 'again' },
      null,
      7,
      'text',
    ];
    assert.equal([...everyNode(readTree(loop))].length, 2);
  });

  test('of any depth is read', () => {
    const chain = Array.from({ length: 10_000 }, (_, index) => ({
      id: `s:${index}`,
      parentId: index === 0 ? null : `s:${index - 1}`,
      role: 'group',
      name: `level ${index}`,
    }));
    assert.equal([...everyNode(readTree(chain))].length, 10_000);
  });
});
