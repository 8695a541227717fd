// How many characters a line of an outline takes in windows of several toolkits.

import type { ChildProcess } from 'node:child_process';
import { existsSync } from 'node:fs';

import { handleOf } from './driver.js';
import { opened, show, showPage, type Place } from './tasks.js';
import { row } from './table.js';

const article = `<!doctype html><title>News</title><nav>${['Home', 'World', 'Sport', 'Weather']
  .map((name) => `<a href="#${name}">${name}</a> `)
  .join('')}</nav><h1>Rain until Friday</h1>${Array.from(
  { length: 12 },
  (_, index) => `<h2>Story ${index + 1}</h2>
<p>What happened in town ${index + 1} is told in a sentence or two, with <a href="#${index}">more</a>.</p>
<label>Rate it <select><option>good<option>bad</select></label> <button>Share</button>`,
).join('')}<form><input aria-label=Search><label><input type=checkbox> Remember me</label></form>`;

interface Window {
  name: string;
  program: string;
  /** Shows it, when opening alone does not. */
  show?: (place: Place) => ChildProcess;
  app: string;
  /** Seen when it is up. */
  text: string;
}

const windows: readonly Window[] = [
  {
    name: 'GTK 3: Thunar',
    program: 'thunar',
    show: (place) => show(place, 'thunar', ['/usr']),
    app: 'thunar',
    text: '"usr - Thunar"',
  },
  {
    name: 'GTK 3: Mousepad',
    program: 'mousepad',
    app: 'org.xfce.mousepad',
    text: 'textbox',
  },
  {
    name: 'GTK 4: the GNOME calculator',
    program: 'gnome-calculator',
    app: 'org.gnome.Calculator',
    text: 'button "7"',
  },
  {
    name: 'Chromium: a page of news',
    program: 'chromium',
    show: (place) => showPage(place, 'news', article),
    app: 'chromium',
    text: '"Share"',
  },
  {
    name: 'LibreOffice Calc',
    program: 'libreoffice',
    app: 'libreoffice-calc',
    text: 'tab "Sheet1"',
  },
];

export async function charactersOfALine(place: Place): Promise<void> {
  const { driver } = place;
  row('window', 'lines', 'characters', 'a line');
  row('---', '---', '---', '---');
  for (const window of windows) {
    if (!existsSync(`/usr/bin/${window.program}`)) {
      row(window.name, 'is not installed', '', '');
      continue;
    }
    const process = window.show?.(place);
    const shown = await opened(driver, window.app, 'window', window.show !== undefined);
    const target = / as ([a-z]{3})$/m.exec(shown)?.[1];
    let text = shown;
    do {
      if (text.includes('Tip of the Day')) {
        await driver.call('click', { node: handleOf(text, /button "OK"/) });
      }
      const look = { target, picture: 'none', max_chars: 45_000 };
      ({ text } = await driver.call('observe', look));
      // An application that is slow tells a part only.
    } while (!text.includes(window.text) || text.includes('not whole'));
    const lines = text.split('\n').filter((line) => /^ *\d+ /.test(line));
    const characters = lines.join('\n').length + 1;
    row(window.name, lines.length, characters, (characters / lines.length).toFixed(1));
    process?.kill('SIGTERM');
  }
}
