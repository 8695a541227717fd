// What the helper can refuse with, and what a model should do about each.

/** A refusal in the helper's own words: nothing is wrong with the helper. */
export class HelperRefusal extends Error {
  override readonly name = 'HelperRefusal';

  constructor(
    readonly code: string,
    message: string,
    /** Further members of the error: `sent`, `seen`, `host`, `permission`. */
    readonly detail: Readonly<Record<string, unknown>> = {},
  ) {
    super(message);
  }
}

/** The helper ended, hung or talked nonsense, and was ended: nothing of it is valid any more. */
export class HelperLost extends Error {
  override readonly name = 'HelperLost';

  constructor(
    message: string,
    /** Whether the request had been handed over, so that what it asked for may have happened. */
    readonly afterSending: boolean,
  ) {
    super(message);
  }
}

const look = 'Take the node from the lines below and try once more.';
const user = 'Tell the user; nothing else helps.';

/** What to do next, for every code that the helper knows. */
export const adviceFor: Readonly<Record<string, string>> = {
  invalid_request: 'The server and the helper are of different versions: check_setup shows both.',
  invalid_argument: 'Mend the argument that the message names.',
  native_error: 'Observe, and try another way; when it comes again, tell the user.',
  session_locked: `The screen is locked. ${user}`,
  ax_not_trusted: 'Call check_setup and tell the user which grant is missing.',
  screen_capture_denied: 'Call check_setup, or go on without pictures (picture: "none").',
  screen_capture_stale: 'Tell the user, or go on without pictures (picture: "none").',
  app_closed: 'Call open_target again.',
  app_not_found: 'Call list_apps and take an identifier from there.',
  app_not_running: 'Call open_target once more: a slow application may be up by now.',
  launch_failed:
    'Call open_target once more: a slow application may be up by now. Else tell the user.',
  focus_failed: 'Call open_target again; when that fails too, the user has to bring it forward.',
  no_window: 'Call open_target again: it opens or finds a window.',
  window_not_visible: 'Call open_target, which brings the window forward.',
  window_covered:
    'Call open_target, which brings the window forward; else the user has to move it.',
  window_capture_failed: 'Go on without pictures (picture: "none").',
  image_encoding_failed: 'Go on without pictures (picture: "none").',
  ocr_failed: 'Observe without ocr; tell the user which package is missing.',
  stale_snapshot: look,
  stale_target:
    'Take the node from the lines below. Passwords and disabled fields are left to the user.',
  not_visible: 'Scroll it into view, or open what holds it, then act on its new line.',
  not_clickable: 'Choose a line that can be clicked; disabled ones and passwords cannot.',
  target_covered:
    'Something lies over it: deal with that first, or bring it forward (open_target).',
  target_busy: 'Finish by click what the window below shows; keys are refused until then.',
  hit_test_failed: 'The application is busy: wait_for quiet, then try once more.',
  input_unsupported: 'Click into it and use press_key, or use the buttons beside it.',
  input_failed: 'Look what has arrived before you try again, or use press_key.',
};
