import assert from 'node:assert/strict';
import { describe, test } from 'node:test';

import { bounded, plain, quoted } from '../../src/text/safe.js';

describe('Text of an application', () => {
  test('is quoted, and cannot end its quotes', () => {
    assert.equal(quoted('Save', 20), '"Save"');
    assert.equal(quoted('a"b\\', 20), '"a\\"b\\\\"');
  });

  test('stays in one line', () => {
    assert.equal(quoted('a\nb\tc\r', 20), '"a\\nb\\tc\\r"');
    assert.equal(quoted('a\u2028b', 20), '"a\\u{2028}b"');
  });

  test('shows what would hide or turn it around', () => {
    assert.equal(quoted('\u202eexe', 20), '"\\u{202e}exe"');
    assert.equal(quoted('a\u200bb', 20), '"a\\u{200b}b"');
    assert.equal(quoted('\u0000\u001b[2J', 30), '"\\u{00}\\u{1b}[2J"');
    assert.equal(quoted('\u{e0041}', 30), '"\\u{e0041}"');
  });

  test('holds no lone surrogates', () => {
    assert.equal(quoted('a\ud800b', 30), '"a\\u{d800}b"');
    assert.equal(quoted('\udc00', 30), '"\\u{dc00}"');
    // Cut between the halves of a pair.
    assert.ok(quoted('abc😀', 4).isWellFormed());
  });

  test('keeps emoji that are joined, and other scripts', () => {
    assert.equal(quoted('👨‍👩‍👧 한글', 30), '"👨‍👩‍👧 한글"');
  });

  test('is bounded, and says how much is left', () => {
    assert.equal(quoted('x'.repeat(50), 10), '"xxxxxxxxxx"…(+40)');
    assert.equal(plain('x'.repeat(50), 10), 'xxxxxxxxxx…(+40)');
    assert.ok(quoted('\n'.repeat(1_000_000), 100).length < 120);
    assert.ok(quoted('"'.repeat(100), 11).endsWith('\\""…(+95)'));
  });
});

describe('A whole answer', () => {
  test('is never longer than its bound', () => {
    for (const most of [0, 1, 10, 60, 100, 1000]) {
      assert.ok(bounded('a😀'.repeat(500), most).length <= most);
    }
  });
});
