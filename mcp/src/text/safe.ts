// Text of applications made harmless: quoted, bounded, with nothing in it that hides or misleads.

// Controls, formats (bidi, zero-width, tags), separators that break lines, lone surrogates, and what
// no font has.
const unsafe = /[\p{Cc}\p{Cf}\p{Zl}\p{Zp}\p{Cs}\p{Cn}]/gu;
const unsafeInQuotes = /[\p{Cc}\p{Cf}\p{Zl}\p{Zp}\p{Cs}\p{Cn}"\\]/gu;
const onlyPlain = /^[\x20-\x21\x23-\x5b\x5d-\x7e]*$/;

const shortForms: Readonly<Record<string, string>> = {
  '\n': '\\n',
  '\r': '\\r',
  '\t': '\\t',
  '"': '\\"',
  '\\': '\\\\',
};

/** A joiner between two pictographs makes one picture of them, and hides nothing. */
function joinsEmoji(whole: string, offset: number): boolean {
  const before = whole.slice(Math.max(0, offset - 4), offset);
  const after = whole.slice(offset + 1, offset + 3);
  return (
    /(\p{Extended_Pictographic}|\p{Emoji_Modifier}|\ufe0f)$/u.test(before) &&
    /^\p{Extended_Pictographic}/u.test(after)
  );
}

function escaped(character: string, offset: number, whole: string): string {
  if (character === '\u200d' && joinsEmoji(whole, offset)) {
    return character;
  }
  const code = (character.codePointAt(0) ?? 0).toString(16).padStart(2, '0');
  return shortForms[character] ?? `\\u{${code}}`;
}

/** At most `most` UTF-16 units of `text`, never half a pair. */
function head(text: string, most: number): string {
  const cut = text.slice(0, Math.max(0, most));
  const last = cut.charCodeAt(cut.length - 1);
  return cut.length < text.length && last >= 0xd800 && last <= 0xdbff ? cut.slice(0, -1) : cut;
}

/** As much of the text as fits into `most` characters, never half an escape, and how much does not. */
function harmless(text: string, most: number, pattern: RegExp): { shown: string; left: number } {
  // Nothing beyond the bound is looked at, so a megabyte costs no more than a line.
  const start = head(text, most);
  const shown = start.replace(pattern, escaped);
  if (shown.length <= most) {
    return { shown, left: text.length - start.length };
  }
  let fits = '';
  let units = 0;
  for (const character of start) {
    const next = character.replace(pattern, () => escaped(character, units, start));
    if (fits.length + next.length > most) {
      break;
    }
    fits += next;
    units += character.length;
  }
  return { shown: fits, left: text.length - units };
}

/** The text without quotes, in one line, at most `most` characters and a note of what is left. */
export function plain(text: string, most: number): string {
  const { shown, left } = harmless(text, most, unsafe);
  return left > 0 ? `${shown}…(+${left})` : shown;
}

/** The text in quotes, at most `most` characters inside them, and a note of what is left. */
export function quoted(text: string, most: number): string {
  if (text.length <= most && onlyPlain.test(text)) {
    return `"${text}"`;
  }
  const { shown, left } = harmless(text, most, unsafeInQuotes);
  return left > 0 ? `"${shown}"…(+${left})` : `"${shown}"`;
}

/** Cuts a whole answer to `most` characters, and says so. */
export function bounded(text: string, most: number): string {
  if (text.length <= most) {
    return text;
  }
  const note = '\n… cut here: ask for less (under, find) or more (max_chars)';
  return most <= note.length ? head(text, most) : head(text, most - note.length) + note;
}
