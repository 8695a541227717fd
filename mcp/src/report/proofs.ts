// What the helper has proven before it sent something, in words. It is told by how it acted: each
// way of acting has its own chain of proofs, and nothing goes out unless the whole chain holds.

const gate = 'The desktop was unlocked, the grant in force, the application alive.';
const same = 'The element was the one observed, by role, name and identifier.';
const front = 'Its application was in front.';
const place = 'It had a place on the screen.';
const uncovered = 'The point lay in the window, and nothing of another application covered it.';
const under = 'The element under the point stood for the node.';
const again = 'All of it once more, right before the button.';
const typable = 'It could be typed into or scrolled, and was no password field.';
const keys = 'The system said that this application gets the keys, before each of them.';
const unread =
  'Recognised text has no element: its place was proven, its words were not read again.';

/** The chain that held when `method` was answered with `result`. Empty for what is no action. */
export function proofsOf(method: string, kind: unknown, result: Record<string, unknown>): string[] {
  const byPointer = wayOf(result).startsWith('pointer');
  const recognised = result['via'] === 'ocr';
  switch (method) {
    case 'click':
    case 'showMenu':
      if (recognised) {
        return [gate, front, uncovered, again, unread];
      }
      if (result['via'] === 'menubar') {
        return [gate, same, front];
      }
      return [gate, same, front, place, ...(byPointer ? [uncovered, under, again] : [])];
    case 'hover':
      return [gate, same, front, place, `${uncovered} Again after the rest.`];
    case 'input': {
      const received = result['method'] === 'keyboard' ? [keys] : [];
      if (recognised) {
        return [gate, front, ...(byPointer ? [uncovered] : received), unread];
      }
      const pointed = kind === 'key' ? [] : [uncovered, under];
      return [gate, same, typable, front, place, ...pointed, ...received];
    }
    default:
      return [];
  }
}

/** What went out, in words. */
export function sentBy(
  method: string,
  args: Record<string, unknown>,
  result: Record<string, unknown>,
): string {
  const way = wayOf(result);
  const pending = result['pending'] === true ? '; the application had not finished with it' : '';
  switch (method) {
    case 'click':
      return `${clickSent(way, result)}${pending}`;
    case 'showMenu':
      return `${way === 'pointer' ? 'the right button of the pointer' : 'the element’s own menu action'}${pending}`;
    case 'hover':
      return 'the pointer came to rest on it; no button';
    case 'input':
      return inputSent(way, args, result);
    default:
      return '';
  }
}

function clickSent(way: string, result: Record<string, unknown>): string {
  if (way === 'pointer-double') {
    return result['clicks'] === 1
      ? 'one click of the pointer; the second could not be proven any more and was left out'
      : 'a double click of the pointer';
  }
  if (way === 'pointer') {
    return result['fallback'] === 'press_unanswered'
      ? 'the element’s own press, unanswered; then a click of the pointer'
      : 'a click of the pointer';
  }
  return 'the element’s own press';
}

function inputSent(
  way: string,
  args: Record<string, unknown>,
  result: Record<string, unknown>,
): string {
  if (args['kind'] === 'type') {
    const how = way === 'keyboard' ? 'character by character' : 'as the field’s value';
    const submit = result['submitted'] === true ? ', then Return' : '';
    return `“${typeof result['sent'] === 'string' ? result['sent'] : ''}” ${how}${submit}`;
  }
  return args['kind'] === 'key' ? 'the key' : 'a turn of the wheel, or a swipe of the pointer';
}

/** How the helper says that it acted: "accessibility", "pointer", "pointer-double", "keyboard". */
function wayOf(result: Record<string, unknown>): string {
  return typeof result['method'] === 'string' ? result['method'] : '';
}
