// HTML in which every text is data: the only way to make it escapes whatever is put in.

/** A piece of HTML that was made here. */
export class Html {
  constructor(readonly text: string) {}
}

type Part = Html | string | number | undefined | false | Part[];

/** Joins a template with its parts. A text is escaped and made visible; undefined and false vanish. */
export function markup(template: TemplateStringsArray, ...parts: Part[]): Html {
  const joined = template.map((text, at) => (at === 0 ? '' : render(parts[at - 1])) + text);
  return new Html(joined.join(''));
}

// What shows nothing, or changes how its neighbours show: control and format characters (bidi and
// zero width among them), line and paragraph separators, halves of surrogate pairs.
const unseen = /[\p{Cc}\p{Cf}\p{Cs}\p{Zl}\p{Zp}]/gu;

/** The text with what cannot be seen in it written out: "‹202E›" for a right-to-left override. */
export function visible(text: string): string {
  return text.replace(unseen, (character) => {
    const code = character.codePointAt(0) ?? 0;
    return code === 10 ? '⏎' : `‹${code.toString(16).toUpperCase().padStart(4, '0')}›`;
  });
}

/** At most `length` characters of a text, and how many more there were. */
export function bounded(text: string, length: number): string {
  const rest = text.length - length;
  return rest > 0 ? `${text.slice(0, length)}… (+${rest} characters)` : text;
}

const entities: Record<string, string> = {
  '&': '&amp;',
  '<': '&lt;',
  '>': '&gt;',
  '"': '&quot;',
  "'": '&#39;',
};

function render(part: Part): string {
  if (Array.isArray(part)) {
    return part.map(render).join('');
  }
  if (part instanceof Html) {
    return part.text;
  }
  if (part === undefined || part === false) {
    return '';
  }
  return visible(String(part)).replace(/[&<>"']/g, (character) => entities[character] ?? '');
}
