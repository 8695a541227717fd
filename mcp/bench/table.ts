// The rows that are printed, as docs/agent.md has them.

export function median(values: readonly number[]): number {
  return [...values].sort((a, b) => a - b)[Math.floor(values.length / 2)] ?? NaN;
}

export function row(...cells: (string | number)[]): void {
  process.stdout.write(`| ${cells.join(' | ')} |\n`);
}
