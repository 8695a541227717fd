// What people do every day, in applications that nobody here wrote, by tool calls alone.

import { spawn, type ChildProcess } from 'node:child_process';
import { existsSync, mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';

import { handleOf, type Driver } from './driver.js';

/** Where a task is done: on a desktop that nobody else uses. */
export interface Place {
  driver: Driver;
  /** For the files of the task. */
  folder: string;
  /** Of the desktop. */
  environment: NodeJS.ProcessEnv;
}

export interface Task {
  name: string;
  /** The programs that it is done in. */
  needs: string[];
  run(place: Place): Promise<void>;
}

function expect(met: boolean, what: string): void {
  if (!met) {
    throw new Error(what);
  }
}

/** Ends with the desktop that it is shown on. */
export function show(place: Place, command: string, args: string[]): ChildProcess {
  const child = spawn(command, args, { stdio: 'ignore', env: place.environment });
  // It is not waited for: a file manager stays when its window is closed.
  child.unref();
  return child;
}

export function showPage(place: Place, name: string, html: string): ChildProcess {
  const { folder } = place;
  const page = join(folder, `${name}.html`);
  writeFileSync(page, html);
  return show(place, 'chromium', [
    ...'--no-first-run --no-default-browser-check --disable-gpu --no-sandbox'.split(' '),
    '--password-store=basic',
    '--window-size=1280,800',
    '--window-position=0,0',
    `--user-data-dir=${join(folder, `profile-${name}`)}`,
    `file://${page}`,
  ]);
}

/** Opens it as soon as it shows what is waited for; `started`: somebody has started it already. */
export async function opened(
  driver: Driver,
  app: string,
  text: string,
  started = true,
): Promise<string> {
  const deadline = Date.now() + 60_000;
  // Opened before it is up, it would be started a second time.
  const runs = async () =>
    (await driver.call('list_apps', { filter: app })).text.includes('running');
  while (started && !(await runs()) && Date.now() < deadline) {
    await new Promise((resolve) => setTimeout(resolve, 500));
  }
  for (;;) {
    const seen = await driver.call('open_target', { app, picture: false });
    if (seen.text.includes(text) || Date.now() > deadline) {
      expect(seen.text.includes(text), `${app} does not show ${text}:\n${seen.text}`);
      return seen.text;
    }
    await new Promise((resolve) => setTimeout(resolve, 500));
  }
}

async function calculate({ driver }: Place): Promise<void> {
  const seen = await driver.call('open_target', { app: 'org.gnome.Calculator', picture: false });
  if (!seen.text.includes('button "7"')) {
    await driver.call('wait_for', { text: 'Calculate Result', timeout_ms: 30_000 });
  }
  const press = (find: string) => ({ do: 'click', find, role: 'button' });
  let done = await driver.steps(['7', '×', '6', '='].map(press));
  if (!done.text.includes('"42"')) {
    done = await driver.call('wait_for', { text: '42', timeout_ms: 30_000 });
  }
  expect(done.text.includes('"42"'), `no 42 in:\n${seen.text}\n${done.text}`);
}

async function writeText({ driver, folder }: Place): Promise<void> {
  const path = join(folder, 'note.txt');
  const first = await driver.call('open_target', { app: 'org.xfce.mousepad', picture: false });
  const steps = [
    { do: 'type_text', node: handleOf(first.text, /textbox/), text: 'Bread and milk' },
    { do: 'click', find: 'Save As...', role: 'menuitem', new_window: true },
    { do: 'type_text', role: 'textbox', text: path },
    { do: 'click', find: 'Save', role: 'button', new_window: true },
  ];
  const done = await driver.steps(steps);
  const text = existsSync(path) ? readFileSync(path, 'utf8').trim() : '';
  expect(text === 'Bread and milk', `saved was "${text}":\n${done.text}`);
}

const form = `<!doctype html><title>Order</title><form id=f><label>Name <input id=n></label>
<label>Town <input id=t></label><label><input type=checkbox id=g> Gift</label><button>Submit order</button>
</form><p id=r></p><script>f.onsubmit=e=>{e.preventDefault();
r.textContent='Thanks '+n.value+' of '+t.value+(g.checked?' (gift)':'')}</script>`;

async function sendForm(place: Place): Promise<void> {
  const { driver } = place;
  const browser = showPage(place, 'form', form);
  await opened(driver, 'chromium', 'Submit order');
  // What waited for the browser to start is not the task's.
  driver.taken();
  const seen = await driver.call('open_target', { app: 'chromium', picture: false });
  const steps = [
    { do: 'type_text', node: handleOf(seen.text, /textbox "Name"/), text: 'Kim' },
    { do: 'type_text', node: handleOf(seen.text, /textbox "Town"/), text: 'Seoul' },
    { do: 'click', node: handleOf(seen.text, /checkbox "Gift"/) },
    { do: 'click', node: handleOf(seen.text, /button "Submit order"/) },
  ];
  const done = await driver.steps(steps);
  browser.kill('SIGTERM');
  expect(done.text.includes('Thanks Kim of Seoul (gift)'), `not sent:\n${done.text}`);
}

async function renameFile(place: Place): Promise<void> {
  const { driver, folder } = place;
  const shown = join(folder, 'files');
  mkdirSync(shown);
  writeFileSync(join(shown, 'draft.txt'), 'x');
  show(place, 'thunar', [shown]);
  await opened(driver, 'thunar', '"Icon view"');
  driver.taken();
  const icons = await driver.call('open_target', { app: 'thunar', picture: false });
  // Its icons are not listed; as a list it tells of its files.
  const menu = await driver.steps([
    { do: 'press_key', node: handleOf(icons.text, /window "files/), key: 'Control+2' },
    { do: 'open_menu', find: 'draft.txt', role: 'cell' },
  ]);
  const renamed = await driver.steps([
    { do: 'click', node: handleOf(menu.text, /menuitem "Rename/), new_window: true },
    { do: 'type_text', role: 'textbox', text: 'final.txt' },
    { do: 'click', find: 'Rename', role: 'button', new_window: true },
  ]);
  expect(existsSync(join(shown, 'final.txt')), `not renamed:\n${menu.text}\n${renamed.text}`);
}

export const tasks: readonly Task[] = [
  {
    name: 'calculate 7 × 6 in the GNOME calculator',
    needs: ['gnome-calculator'],
    run: calculate,
  },
  {
    name: 'write a text in Mousepad and save it under a name',
    needs: ['mousepad'],
    run: writeText,
  },
  { name: 'fill in and send a form in Chromium', needs: ['chromium'], run: sendForm },
  { name: 'rename a file in Thunar', needs: ['thunar'], run: renameFile },
];
