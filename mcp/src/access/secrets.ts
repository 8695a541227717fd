// Secrets that the environment holds for the model to type without seeing them.

export const hidden = '••••';

/** Others are named one by one; these were given to this server and to nobody else. */
const prefix = 'TARQO_SECRET_';
// A shorter one would blot out half of what is read, and is no secret.
const shortest = 4;

function isObject(value: unknown): value is Record<string, unknown> {
  return typeof value === 'object' && value !== null && !Array.isArray(value);
}

export class Secrets {
  private readonly values: ReadonlyMap<string, string>;
  /** What was typed into password fields, to be hidden where it shows. */
  private readonly typed = new Set<string>();

  constructor(environment: NodeJS.ProcessEnv, named: readonly string[]) {
    this.values = new Map(
      Object.entries(environment).filter(
        (entry): entry is [string, string] =>
          (entry[0].startsWith(prefix) || named.includes(entry[0])) && (entry[1] ?? '') !== '',
      ),
    );
  }

  get names(): string[] {
    return [...this.values.keys()].sort();
  }

  find(name: string): string | undefined {
    return this.values.get(name);
  }

  /** From now on this is hidden in everything that leaves the server. */
  hide(text: string): void {
    this.typed.add(text);
  }

  private hiddenTexts(): string[] {
    const all = [...this.values.values(), ...this.typed].filter((text) => text.length >= shortest);
    return all.sort((a, b) => b.length - a.length);
  }

  /** The text with `••••` wherever a secret stood. */
  redact(text: string): string {
    let result = text;
    for (const secret of this.hiddenTexts()) {
      result = result.replaceAll(secret, hidden);
    }
    return result;
  }

  /** A line of JSON with `••••` in each of its texts that held a secret. */
  redactLine(line: string): string {
    const secrets = this.hiddenTexts();
    if (secrets.length === 0) {
      return line;
    }
    // Escapes differ between writers, so the texts are looked at and not the line.
    try {
      return JSON.stringify(this.redactValue(JSON.parse(line) as unknown));
    } catch {
      return this.redact(line);
    }
  }

  private redactValue(value: unknown): unknown {
    if (typeof value === 'string') {
      return this.redact(value);
    }
    if (Array.isArray(value)) {
      return value.map((item) => this.redactValue(item));
    }
    if (isObject(value)) {
      return Object.fromEntries(
        Object.entries(value).map(([key, item]) => [key, this.redactValue(item)]),
      );
    }
    return value;
  }
}
