import assert from 'node:assert/strict';
import { readFileSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { join } from 'node:path';
import { test, type TestContext } from 'node:test';
import { pathToFileURL } from 'node:url';
import { reportOf } from '../../src/report/report.js';
import { recordNotes, scratchFolder } from '../recorder/session.js';
import { chromium, Tab } from './chromium.js';

const axeSource = readFileSync(createRequire(import.meta.url).resolve('axe-core'), 'utf8');
const skip = chromium === undefined ? 'needs Chromium' : false;

async function openReport(t: TestContext, options = {}): Promise<Tab> {
  const { folder } = await recordNotes(t);
  const path = join(scratchFolder(t), 'report.html');
  writeFileSync(path, await reportOf(folder));
  const tab = await Tab.open(t, options);
  await tab.go(pathToFileURL(path).href);
  return tab;
}

interface Violation {
  id: string;
  nodes: { html: string }[];
}

async function violations(tab: Tab): Promise<string[]> {
  await tab.value(`${axeSource}; undefined`);
  const found = await tab.value<Violation[]>(
    'axe.run(document).then(({violations}) => violations)',
  );
  return found.map(({ id, nodes }) => `${id}: ${nodes.map((node) => node.html).join(' ')}`);
}

const shown = `[...document.querySelectorAll('main > section')]
  .filter((section) => section.checkVisibility()).map((section) => section.id).join()`;

for (const dark of [false, true]) {
  test(`axe finds nothing wrong with any step, ${dark ? 'dark' : 'light'}`, { skip }, async (t) => {
    const tab = await openReport(t, { dark });
    assert.deepEqual(await violations(tab), []);
    await tab.press('n');
    await tab.value(`for (const part of document.querySelectorAll('details, section')) {
      part.open = true;
      part.hidden = false;
    }`);
    assert.deepEqual(await violations(tab), []);
  });
}

test('axe does find what is wrong', { skip }, async (t) => {
  const tab = await openReport(t);
  await tab.value("document.querySelector('nav .title').style.color = '#eee'");
  assert.match((await violations(tab)).join(), /^color-contrast/);
});

test('the page has nothing to complain of and asks for nothing', { skip }, async (t) => {
  const tab = await openReport(t);
  for (const key of ['j', 'k', 'End', 'Home', 'n', 'p', 'x', 'Escape']) {
    await tab.press(key);
  }
  await tab.value("document.querySelectorAll('nav a')[2].click()");
  assert.deepEqual(tab.complaints, []);
  const others = tab.requests.filter((url) => !url.startsWith('data:'));
  assert.equal(others.length, 1, others.join());
  // Each picture really shows: it has its own size, and is decoded.
  const sizes = await tab.value<number[]>(
    `Promise.all([...document.querySelectorAll('.store image')].map((image) => new Promise((give) => {
      const picture = new Image();
      picture.onload = () => give(picture.naturalWidth);
      picture.onerror = () => give(0);
      picture.src = image.getAttribute('href');
    })))`,
  );
  assert.ok(sizes.length > 0 && sizes.every((size) => size >= 800), sizes.join());
});

test('keys go from step to step and from refusal to refusal', { skip }, async (t) => {
  const tab = await openReport(t);
  assert.equal(await tab.value(shown), 'step-1');
  await tab.press('j');
  await tab.press('ArrowDown');
  assert.equal(await tab.value(shown), 'step-3');
  await tab.press('k');
  assert.equal(await tab.value(shown), 'step-2');
  await tab.press('End');
  const last = await tab.value<string>(shown);
  await tab.press('j');
  assert.equal(await tab.value(shown), last);
  await tab.press('Home');
  await tab.press('n');
  const refused = "document.querySelector('section:not([hidden])').className";
  assert.equal(await tab.value(refused), 'refused');
  assert.equal(await tab.value('location.hash'), '#' + (await tab.value<string>(shown)));
  assert.equal(await tab.value('document.activeElement.hash'), await tab.value('location.hash'));
});

test('the node that was clicked is marked where it is in the picture', { skip }, async (t) => {
  const tab = await openReport(t, { width: 1600, height: 1000 });
  const [mark, picture] = await tab.value<[DOMRectLike, DOMRectLike]>(`(() => {
    const section = [...document.querySelectorAll('section')]
      .find((each) => each.querySelector('h2').textContent.includes('click button “Save”'));
    location.hash = section.id;
    return new Promise((give) => setTimeout(() => give(['rect.mark', 'svg'].map((selector) => {
      const { x, y, width, height } = section.querySelector(selector).getBoundingClientRect();
      return { x, y, width, height };
    })), 50));
  })()`);
  // The scene: the window at 100,80 is 800 wide, and "Save" lies at 120,116, 80 wide and 24 high.
  const scale = picture.width / 800;
  const near = (actual: number, expected: number) => {
    assert.ok(Math.abs(actual - expected) < 4, `${actual}, expected ${expected}`);
  };
  near(mark.x - picture.x, 20 * scale);
  near(mark.y - picture.y, 36 * scale);
  near(mark.width, 80 * scale);
});

interface DOMRectLike {
  x: number;
  y: number;
  width: number;
  height: number;
}
