// What listens in on the conversation with the helper: the flight recorder is one.

/**
 * Told of everything that passes between the server and a helper process, in its order. Lines come
 * without their line end, and with `••••` in the place of what a secret supplied. Must not throw.
 */
export interface HelperTap {
  request(line: string): void;
  response(line: string): void;
  started(info: { command: string[]; pid: number }): void;
  ended(info: { code: number | null; signal: string | null }): void;
}
