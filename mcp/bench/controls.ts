// A page of 2,000 controls: what a look, a refusal and a click take, beside the peer's figures.

import { handleOf, type Driver, type Said } from './driver.js';
import { opened, showPage, type Place } from './tasks.js';
import { median, row } from './table.js';

const controls = 2000;
const few = 20;
const rounds = 5;

/** Buttons that name themselves when they are pressed; the first lies under another one. */
function page(count: number): string {
  const buttons = Array.from({ length: count }, (_, index) => `<button>b${index}</button>`);
  return `<!doctype html><title>${count} controls</title><style>body{margin:0;font-size:6px}
button{width:24px;height:12px;padding:0;font-size:6px}p{margin:0}
#cover{position:absolute;left:0;width:60px}</style><p id=said>nothing</p>${buttons.join('')}
<button id=cover>Cover</button><script>const first=document.querySelector('button');
cover.style.top=first.getBoundingClientRect().top+'px';
onclick=e=>{if(e.target.localName==='button')said.textContent='pressed '+e.target.textContent}
</script>`;
}

interface Times {
  look: number[];
  pictured: number[];
  refused: number[];
  clicked: number[];
}

/** A whole look at the page; a browser that is busy tells only a part of it in time. */
async function whole(driver: Driver, target: string, count: number): Promise<Said> {
  for (let attempt = 0; ; attempt++) {
    const seen = await driver.call('observe', { target, picture: 'none' });
    if (nodesIn(seen.text) >= count) {
      return seen;
    }
    if (attempt === 10) {
      throw new Error(`no whole look at ${count} controls:\n${seen.text.slice(0, 500)}`);
    }
  }
}

function nodesIn(text: string): number {
  return Number(/ (\d+) nodes/.exec(text)?.[1] ?? 0);
}

async function refusedAndClicked(driver: Driver, target: string, count: number, times: Times) {
  let seen = await whole(driver, target, count);
  times.look.push(seen.ms);
  // A double click is made with the pointer, which the cover would get.
  const refusal = await driver.call('click', { node: handleOf(seen.text, /"b0"/), count: 2 });
  if (!refusal.text.startsWith('refused')) {
    throw new Error(`the covered button was clicked:\n${refusal.text}`);
  }
  times.refused.push(refusal.ms);
  seen = await whole(driver, target, count);
  times.look.push(seen.ms);
  const name = `b${5 + times.clicked.length}`;
  const click = await driver.call('click', {
    node: handleOf(seen.text, new RegExp(`button "${name}"`)),
  });
  if (!click.text.startsWith('done') || !click.text.includes(`"pressed ${name}"`)) {
    throw new Error(`a click, and not what it changed:\n${click.text}`);
  }
  times.clicked.push(click.ms);
}

async function measured(place: Place, count: number): Promise<{ times: Times; seen: Said }> {
  const { driver } = place;
  const browser = showPage(place, `controls-${count}`, page(count));
  const shown = await opened(driver, 'chromium', '"b1"');
  const target = / as ([a-z]{3})$/m.exec(shown)?.[1] ?? '';
  const times: Times = { look: [], pictured: [], refused: [], clicked: [] };
  const seen = await whole(driver, target, count);
  for (let round = 0; round < rounds; round++) {
    const pictured = await driver.call('observe', { target });
    times.pictured.push(pictured.ms);
    await refusedAndClicked(driver, target, count, times);
  }
  const ended = new Promise((resolve) => browser.once('exit', resolve));
  browser.kill('SIGTERM');
  await ended;
  return { times, seen };
}

function times(what: string, measured: number[], peer: string | number): void {
  const least = Math.min(...measured);
  row(what, `${median(measured).toFixed(0)} (least ${least.toFixed(0)})`, peer);
}

export async function manyControls(place: Place): Promise<void> {
  const many = await measured(place, controls);
  const usual = await measured(place, few);
  row('2,000 controls in Chromium', 'here', 'peer');
  row('---', '---', '---');
  row('look, characters', many.seen.text.length, 166_579);
  row('nodes in the look', nodesIn(many.seen.text), '');
  times('look, ms', many.times.look, 400);
  times('look with its picture, ms', many.times.pictured, '400 + 207');
  times('click, and what it changed, ms', many.times.clicked, '1105 + 400, in two calls');
  times('covered control refused, and looked again, ms', many.times.refused, 5089);
  times('the same among 20 controls, ms', usual.times.refused, '');
  times('click, and what it changed, among 20, ms', usual.times.clicked, '');
}
