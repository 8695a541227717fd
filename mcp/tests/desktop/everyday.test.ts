// What people do every day, in applications that nobody here wrote, by the built server alone, on a
// desktop of its own.

import assert from 'node:assert/strict';
import { existsSync, mkdtempSync, rmSync } from 'node:fs';
import { join, resolve } from 'node:path';
import { after, before, describe, test } from 'node:test';
import { Driver } from '../../bench/driver.js';
import { tasks, type Place } from '../../bench/tasks.js';
import { startPrivateDesktop, type PrivateDesktop } from '../../src/desktop/private_desktop.js';
import { repository } from '../recorder/session.js';
import { mainProgram } from '../support/session.js';

const helper = process.env['TARQO_AX'] ?? resolve(repository, 'build/release/tarqo-ax');

/** Why a task cannot be done here; false when it can. */
function missing(programs: string[]): string | false {
  const lacking = [helper, '/usr/bin/Xvfb', ...programs.map((one) => join('/usr/bin', one))].find(
    (path) => !existsSync(path),
  );
  return lacking === undefined ? false : `needs ${lacking}`;
}

describe('By tool calls alone', { skip: missing([]) }, () => {
  let desktop: PrivateDesktop;
  let place: Place;

  before(async () => {
    desktop = await startPrivateDesktop('1280x800');
    const environment = desktop.env;
    const folder = mkdtempSync(join(environment['TARQO_DESKTOP'] ?? '', 'tmp/tasks-'));
    const args = ['--helper', helper, '--rate', '100000'];
    place = { driver: await Driver.start(mainProgram, args, environment), folder, environment };
  });

  after(async () => {
    await place.driver.close();
    rmSync(place.folder, { recursive: true, force: true });
    await desktop.stop();
  });

  for (const task of tasks) {
    test(`one can ${task.name}`, { skip: missing(task.needs) }, async () => {
      place.driver.taken();
      await task.run(place);
      const { calls, characters, repeated } = place.driver.taken();
      // An application that is slow under load is refused or waited for now and then.
      assert.ok(calls - repeated <= 4, `${calls} calls`);
      assert.ok(characters <= 3500 * (1 + repeated), `${characters} characters`);
    });
  }
});
