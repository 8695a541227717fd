#include "platform/linux/linux_key_row.h"

#include <X11/keysym.h>
#include <xcb/xtest.h>

#include <algorithm>

#include "platform/linux/linux_keysyms.h"
#include "platform/linux/linux_x_modifiers.h"

namespace tarqo::lnx {
namespace {

void fakeKey(XServer& server, std::uint8_t type, xcb_keycode_t key) {
  xcb_test_fake_input(server.raw(), type, key, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
}

void releaseKey(XServer& server, xcb_keycode_t key) { fakeKey(server, XCB_KEY_RELEASE, key); }

// A key that the user let go of after it had been pressed again on his behalf still counts as down
// on the keyboard of XTEST, which would take the press for a repetition.
void pressKey(XServer& server, xcb_keycode_t key) {
  fakeKey(server, XCB_KEY_RELEASE, key);
  fakeKey(server, XCB_KEY_PRESS, key);
}

KeySymbols textMeaning(xcb_keysym_t keysym) { return KeySymbols::typing(keysym, keysym); }

KeySymbols keyMeaning(xcb_keysym_t keysym) {
  return KeySymbols::typing(keysym, shiftedKeysym(keysym));
}

}  // namespace

KeyRow::KeyRow(XDisplay& display, std::string_view text)
    : display_(display), text_(keysymsOfText(text)), borrowed_(display) {}

XServer* KeyRow::begin() {
  heedSignals();
  XServer* server = display_.server();
  if (server == nullptr || !server->extensions().test || !server->extensions().keyboard) {
    return nullptr;
  }
  if (!keymap_) {
    keymap_ = readKeymap(*server);
    if (!keymap_) {
      return nullptr;
    }
    signals_.emplace();
    layout_ = currentLayout(*server);
    locks_ = switchLocksOff(*server, *keymap_);
  }
  return server;
}

void KeyRow::heedSignals() {
  if (signals_ && EndingSignals::pending()) {
    end();
  }
}

std::optional<xcb_keycode_t> KeyRow::keyOf(xcb_keysym_t keysym) const {
  if (const auto own = keymap_->find(keysym, layout_, 0)) {
    return own;
  }
  return borrowed_.find(keyMeaning(keysym));
}

std::optional<KeyRow::Stroke> KeyRow::ownStroke(xcb_keysym_t keysym) const {
  if (const auto plain = keymap_->find(keysym, layout_, 0)) {
    return Stroke{*plain, false};
  }
  const auto shifted = keymap_->find(keysym, layout_, 1);
  if (shifted && keymap_->find(XK_Shift_L, layout_, 0)) {
    return Stroke{*shifted, true};
  }
  return std::nullopt;
}

std::optional<KeyRow::Stroke> KeyRow::textStroke(xcb_keysym_t keysym) const {
  if (const auto own = ownStroke(keysym)) {
    return own;
  }
  const auto lent = borrowed_.find(textMeaning(keysym));
  return lent ? std::optional(Stroke{*lent, false}) : std::nullopt;
}

bool KeyRow::lendFor(const std::vector<xcb_keysym_t>& keysyms, std::size_t from) {
  const std::size_t capacity = borrowed_.capacity();
  std::vector<KeySymbols> wanted;
  const auto want = [&](xcb_keysym_t keysym) {
    const KeySymbols meaning = textMeaning(keysym);
    if (wanted.size() < capacity && !ownStroke(keysym) &&
        std::find(wanted.begin(), wanted.end(), meaning) == wanted.end()) {
      wanted.push_back(meaning);
    }
  };
  const bool needsKeys = std::any_of(keysyms.begin(), keysyms.end(),
                                     [&](xcb_keysym_t each) { return !ownStroke(each); });
  std::for_each(keysyms.begin(), keysyms.end(), want);
  const std::size_t urgent = wanted.size();
  std::for_each(text_.begin() + static_cast<std::ptrdiff_t>(from), text_.end(), want);
  return !needsKeys || (urgent > 0 && borrowed_.lend(wanted, urgent));
}

bool KeyRow::prepare(const TextEvent& event) {
  if (begin() == nullptr) {
    return false;
  }
  if (!event.down) {
    return true;
  }
  const std::vector<xcb_keysym_t> keysyms = keysymsOfText(event.text);
  const auto rest = text_.begin() + static_cast<std::ptrdiff_t>(typed_);
  if (static_cast<std::size_t>(text_.end() - rest) >= keysyms.size() &&
      std::equal(keysyms.begin(), keysyms.end(), rest)) {
    typed_ += keysyms.size();
  }
  return lendFor(keysyms, typed_);
}

bool KeyRow::prepare(const KeyEvent& event) {
  const auto keysym = keysymOfKey(event.keyCode);
  if (begin() == nullptr || !keysym) {
    return false;
  }
  for (const ModifierKey& modifier : modifierKeys()) {
    if ((event.modifiers & modifier.mask) != 0 && !keymap_->find(modifier.keysym, layout_, 0)) {
      return false;
    }
  }
  return keyOf(*keysym) || borrowed_.lend({keyMeaning(*keysym)}, 1);
}

void KeyRow::post(const TextEvent& event) {
  XServer* server = begin();
  if (server == nullptr || !event.down) {
    return;
  }
  const std::vector<xcb_keysym_t> keysyms = keysymsOfText(event.text);
  const std::vector<xcb_keycode_t> held = heldKeys(*server, *keymap_, {});
  std::for_each(held.begin(), held.end(), [&](auto key) { releaseKey(*server, key); });
  const auto shift = keymap_->find(XK_Shift_L, layout_, 0);
  for (auto keysym = keysyms.begin(); keysym != keysyms.end(); ++keysym) {
    auto stroke = textStroke(*keysym);
    if (!stroke && lendFor({keysym, keysyms.end()}, typed_)) {  // More characters than keys.
      stroke = textStroke(*keysym);
    }
    if (!stroke) {
      break;
    }
    if (stroke->shifted) {
      pressKey(*server, *shift);
    }
    pressKey(*server, stroke->key);
    releaseKey(*server, stroke->key);
    if (stroke->shifted) {
      releaseKey(*server, *shift);
    }
    borrowed_.touch(stroke->key);
  }
  std::for_each(held.begin(), held.end(), [&](auto key) { pressKey(*server, key); });
  server->sync();
}

void KeyRow::post(const KeyEvent& event) {
  XServer* server = begin();
  if (server == nullptr) {
    return;
  }
  if (event.down) {
    press(*server, event);
  } else {
    release(*server);
  }
  server->sync();
}

void KeyRow::press(XServer& server, const KeyEvent& event) {
  const auto keysym = keysymOfKey(event.keyCode);
  const auto key = keysym ? keyOf(*keysym) : std::nullopt;
  if (!key) {
    return;
  }
  release(server);
  chord_ = Chord{{}, heldKeys(server, *keymap_, {*key})};
  for (const xcb_keycode_t held : chord_->released) {
    releaseKey(server, held);
  }
  for (const ModifierKey& modifier : modifierKeys()) {
    const auto found = keymap_->find(modifier.keysym, layout_, 0);
    if ((event.modifiers & modifier.mask) != 0 && found) {
      chord_->keys.push_back(*found);
    }
  }
  chord_->keys.push_back(*key);
  for (const xcb_keycode_t each : chord_->keys) {
    pressKey(server, each);
  }
  borrowed_.touch(*key);
}

void KeyRow::release(XServer& server) {
  if (!chord_) {
    return;
  }
  std::for_each(chord_->keys.rbegin(), chord_->keys.rend(),
                [&](xcb_keycode_t key) { releaseKey(server, key); });
  borrowed_.touch(chord_->keys.back());
  const xcb_keycode_t pressed = chord_->keys.back();
  for (const xcb_keycode_t held : chord_->released) {
    if (held != pressed) {
      pressKey(server, held);
    }
  }
  chord_.reset();
}

void KeyRow::end() {
  if (XServer* server = keymap_ ? display_.server() : nullptr) {
    release(*server);
    borrowed_.giveBack();
    switchLocksOn(*server, locks_);
    server->sync();
  }
  keymap_.reset();
  signals_.reset();  // Ends the process when a signal asked for that.
}

}  // namespace tarqo::lnx
