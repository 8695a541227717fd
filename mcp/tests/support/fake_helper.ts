// A helper that misbehaves on purpose: fake_helper.js METHOD HOW. Until METHOD is asked it is well-behaved.

import { createInterface } from 'node:readline';

const [method = '', how = ''] = process.argv.slice(2);
let looks = 0;

function window(): unknown {
  looks++;
  const id = (number: number) => `look${looks}:${number}`;
  const node = (number: number, parentId: string | null, role: string, name: string) => ({
    id: id(number),
    parentId,
    role,
    rawRole: `AX${role}`,
    name,
    enabled: true,
    clickable: role === 'button',
    press: role === 'button',
    bounds: { x: 0, y: number * 30, width: 100, height: 20 },
  });
  const nodes = [
    node(0, null, 'window', 'Fake'),
    node(1, id(0), 'button', 'Go'),
    node(2, id(0), 'button', 'Stop'),
  ];
  return { snapshot: { id: `look${looks}`, title: 'Fake', nodes, truncated: false } };
}

const answers: Record<string, () => unknown> = {
  host: () => ({ known: false, host: { name: 'nobody' } }),
  preflight: () => ({ accessibility: true, screenCapture: true, host: { name: 'nobody' } }),
  listTargets: () => ({ targets: [{ bundleId: 'fake.app', name: 'Fake', running: true }] }),
  connect: () => ({ bundleId: 'fake.app', name: 'Fake', pid: 1 }),
  settle: () => ({ heard: [], quiet: true, listening: true, waitedMs: 1 }),
  observe: window,
  click: () => ({ method: 'accessibility', at: 'now' }),
};

function misbehave(id: unknown): void {
  const write = (text: string) => process.stdout.write(text);
  switch (how) {
    case 'hang':
      return;
    case 'crash':
      process.stderr.write('out of cheese\n');
      process.exit(7);
      break;
    case 'half':
      write('{"id":');
      setTimeout(() => process.exit(0), 20);
      return;
    case 'nonsense':
      write('lorem ipsum\n');
      return;
    case 'array':
      write('[1,2,3]\n');
      return;
    case 'other-id':
      write(`${JSON.stringify({ id: 'x', result: {} })}\n`);
      return;
    case 'neither':
      write(`${JSON.stringify({ id })}\n`);
      return;
    case 'wrong-types':
      write(
        `${JSON.stringify({ id, result: { snapshot: { title: 7, nodes: [1, null, 'x', { id: 3 }, { id: 'a', parentId: 'a', role: [], name: {} }] }, targets: 'none', image: { base64: 5 } } })}\n`,
      );
      return;
    case 'native-error':
      write(`${JSON.stringify({ id, error: { code: 'native_error', message: 'odd' } })}\n`);
      return;
    case 'partial':
      write(
        `${JSON.stringify({ id, error: { code: 'input_failed', message: 'Could not create a key event.', sent: 'hel' } })}\n`,
      );
      return;
    case 'endless':
      // As long as anybody reads.
      for (let count = 0; count < 80; count++) {
        write('x'.repeat(1024 * 1024));
      }
      return;
    default:
      throw new Error(`unknown misbehaviour ${how}`);
  }
}

createInterface({ input: process.stdin }).on('line', (line) => {
  const request = JSON.parse(line) as { id: unknown; method: string };
  if (request.method === method) {
    misbehave(request.id);
    return;
  }
  const answer = answers[request.method];
  const body =
    answer === undefined
      ? { error: { code: 'invalid_request', message: 'Unknown native method' } }
      : { result: answer() };
  process.stdout.write(`${JSON.stringify({ id: request.id, ...body })}\n`);
});
