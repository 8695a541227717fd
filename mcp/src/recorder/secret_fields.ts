// Keeps what is typed into password fields out of recordings.

import { hidden, isRecord } from './recording.js';

/**
 * Remembers which nodes of the last observation are password fields. A text that is typed into one
 * is hidden in the request, and in the answer, which repeats it or, in a failure, its beginning.
 */
export class SecretFields {
  private nodes = new Set<unknown>();
  private readonly requests = new Set<unknown>();

  /** The helper is another one: nothing of the one before can come back. */
  forget(): void {
    this.nodes.clear();
    this.requests.clear();
  }

  hideInRequest(request: Record<string, unknown>): void {
    const args = request['args'];
    if (isRecord(args) && typeof args['text'] === 'string' && this.nodes.has(args['nodeId'])) {
      args['text'] = hidden;
      this.requests.add(request['id']);
    }
  }

  hideInAnswer(answer: Record<string, unknown>): void {
    const { result, error } = answer;
    if (this.requests.delete(answer['id'])) {
      for (const part of [result, error]) {
        if (isRecord(part) && typeof part['sent'] === 'string') {
          part['sent'] = hidden;
        }
      }
    }
    const snapshot = isRecord(result) ? result['snapshot'] : undefined;
    if (isRecord(snapshot) && Array.isArray(snapshot['nodes'])) {
      const secure = snapshot['nodes'].filter((node) => isRecord(node) && node['secure'] === true);
      this.nodes = new Set(secure.map((node: Record<string, unknown>) => node['id']));
    }
  }
}
