#include "platform/linux/input/key_sequence.h"

#include <X11/keysym.h>

#include <algorithm>

#include "platform/linux/input/keysyms.h"
#include "platform/linux/x11/server_grab.h"

namespace tarqo::lnx::input {
namespace {

KeySymbols textSymbols(xcb_keysym_t keysym) { return KeySymbols::ofPair(keysym, keysym); }

KeySymbols keySymbols(xcb_keysym_t keysym) {
  return KeySymbols::ofPair(keysym, shiftedKeysym(keysym));
}

}  // namespace

KeySequence::KeySequence(x11::Display& display, Clock& clock, FakeKeyboard& keyboard,
                         std::string_view text)
    : display_(display),
      clock_(clock),
      keyboard_(keyboard),
      text_(keysymsOfText(text)),
      remapped_(display, clock) {}

x11::Server* KeySequence::begin() {
  exitIfSignalled();
  x11::Server* server = display_.server();
  if (server == nullptr || !server->extensions().test || !server->extensions().keyboard) {
    return nullptr;
  }
  if (!keymap_) {
    if (!learn(*server)) {
      return nullptr;
    }
    signals_.emplace();
    locks_ = switchLocksOff(*server, numLock_);
  }
  return server;
}

bool KeySequence::learn(x11::Server& server) {
  const std::optional<KeyboardReading> now = readKeyboard(server);
  if (!now) {
    return false;
  }
  keymap_ = remapped_.ownKeys(now->keymap);
  layout_ = now->layout;
  numLock_ = numLockModifiers(server);
  return true;
}

bool KeySequence::isUnchanged(x11::Server& server) {
  const std::optional<KeyboardReading> now = readKeyboard(server);
  if (!now || now->layout != layout_ || !remapped_.holdIn(now->keymap) ||
      remapped_.ownKeys(now->keymap) != keymap_) {
    return false;
  }
  if ((now->locked & ~numLock_) != 0) {
    // The user has pressed the lock key since. A lock that was on before is meant to be off now.
    locks_ ^= switchLocksOff(server, numLock_);
  }
  return true;
}

bool KeySequence::reread() {
  // Applications get as much time as after a change of ours.
  clock_.sleep(kBeforeFirstUse);
  remapped_.renew();
  x11::Server* server = begin();
  return server != nullptr && learn(*server);
}

void KeySequence::exitIfSignalled() {
  if (signals_ && EndingSignals::pending()) {
    end();
  }
}

std::optional<xcb_keycode_t> KeySequence::keyOf(xcb_keysym_t keysym) const {
  if (const auto own = keymap_->find(keysym, layout_, 0)) {
    return own;
  }
  return remapped_.find(keySymbols(keysym));
}

std::optional<KeySequence::Stroke> KeySequence::ownStroke(xcb_keysym_t keysym) const {
  if (const auto plain = keymap_->find(keysym, layout_, 0)) {
    return Stroke{*plain, false};
  }
  const auto shifted = keymap_->find(keysym, layout_, 1);
  if (shifted && keymap_->find(XK_Shift_L, layout_, 0)) {
    return Stroke{*shifted, true};
  }
  return std::nullopt;
}

std::optional<KeySequence::Stroke> KeySequence::textStroke(xcb_keysym_t keysym) const {
  if (const auto own = ownStroke(keysym)) {
    return own;
  }
  const auto remapped = remapped_.find(textSymbols(keysym));
  return remapped ? std::optional(Stroke{*remapped, false}) : std::nullopt;
}

std::vector<KeySequence::Stroke> KeySequence::strokesOf(const std::string& text) const {
  std::vector<Stroke> strokes;
  for (const xcb_keysym_t keysym : keysymsOfText(text)) {
    const auto stroke = textStroke(keysym);
    if (!stroke) {
      return {};
    }
    strokes.push_back(*stroke);
  }
  return strokes;
}

std::vector<xcb_keycode_t> KeySequence::chordOf(const KeyEvent& event) const {
  std::vector<xcb_keycode_t> chord;
  for (const ModifierKey& modifier : modifierKeys()) {
    if ((event.modifiers & modifier.mask) != 0) {
      const auto key = keymap_->find(modifier.keysym, layout_, 0);
      if (!key) {
        return {};
      }
      chord.push_back(*key);
    }
  }
  const auto keysym = keysymOfKey(event.keyCode);
  const auto key = keysym ? keyOf(*keysym) : std::nullopt;
  if (!key) {
    return {};
  }
  chord.push_back(*key);
  return chord;
}

bool KeySequence::mapFor(const std::vector<xcb_keysym_t>& keysyms) {
  std::vector<KeySymbols> wanted;
  const auto want = [&](xcb_keysym_t keysym) {
    const KeySymbols symbols = textSymbols(keysym);
    if (!ownStroke(keysym) && std::find(wanted.begin(), wanted.end(), symbols) == wanted.end()) {
      wanted.push_back(symbols);
    }
  };
  std::for_each(keysyms.begin(), keysyms.end(), want);
  const std::size_t urgent = wanted.size();
  if (urgent == 0) {
    return true;
  }
  const std::size_t capacity = remapped_.capacity();
  for (std::size_t next = typed_; next < text_.size() && wanted.size() < capacity; ++next) {
    want(text_[next]);
  }
  return urgent <= capacity && remapped_.map(wanted, urgent);
}

bool KeySequence::mapFor(const KeyEvent& event) {
  const auto keysym = keysymOfKey(event.keyCode);
  return keysym && (keyOf(*keysym) || remapped_.map({keySymbols(*keysym)}, 1)) &&
         !chordOf(event).empty();
}

bool KeySequence::prepare(const TextEvent& event) {
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
  return mapFor(keysyms);
}

bool KeySequence::prepare(const KeyEvent& event) { return begin() != nullptr && mapFor(event); }

bool KeySequence::renew(const TextEvent& event) {
  return reread() && mapFor(keysymsOfText(event.text));
}

bool KeySequence::renew(const KeyEvent& event) { return reread() && mapFor(event); }

void KeySequence::strike(x11::Server& server, const Stroke& stroke) {
  const auto shift = stroke.shifted ? keymap_->find(XK_Shift_L, layout_, 0) : std::nullopt;
  if (shift) {
    keyboard_.press(server, *shift);
  }
  keyboard_.press(server, stroke.key);
  keyboard_.release(server, stroke.key);
  if (shift) {
    keyboard_.release(server, *shift);
  }
  remapped_.markUsed(stroke.key);
}

bool KeySequence::post(x11::Server& server, const TextEvent& event) {
  if (!event.down) {
    return true;
  }
  const std::vector<Stroke> strokes = keymap_ ? strokesOf(event.text) : std::vector<Stroke>();
  if (strokes.empty() || !isUnchanged(server)) {
    return event.text.empty();
  }
  keyboard_.setAside(server);
  for (const Stroke& stroke : strokes) {
    strike(server, stroke);
  }
  keyboard_.putBack();
  return true;
}

bool KeySequence::post(x11::Server& server, const KeyEvent& event) {
  if (!event.down) {
    release(server);
    return true;
  }
  const std::vector<xcb_keycode_t> chord = keymap_ ? chordOf(event) : std::vector<xcb_keycode_t>();
  if (chord.empty() || !isUnchanged(server)) {
    return false;
  }
  release(server);
  keyboard_.setAside(server, chord.back());
  down_ = chord;
  for (const xcb_keycode_t key : down_) {
    keyboard_.press(server, key);
  }
  remapped_.markUsed(down_.back());
  return true;
}

void KeySequence::release(x11::Server& server) {
  if (down_.empty()) {
    return;
  }
  std::for_each(down_.rbegin(), down_.rend(),
                [&](xcb_keycode_t key) { keyboard_.release(server, key); });
  remapped_.markUsed(down_.back());
  down_.clear();
  keyboard_.putBack();
}

void KeySequence::end() {
  if (x11::Server* server = down_.empty() ? nullptr : display_.server()) {
    const x11::ServerGrab grab(*server);
    release(*server);
  }
  remapped_.restore();
  if (x11::Server* server = keymap_ ? display_.server() : nullptr) {
    switchLocksOn(*server, locks_);
    server->sync();  // The server may drop the last requests of a client that has gone.
  }
  keymap_.reset();
  down_.clear();
  locks_ = 0;
  signals_.reset();  // Ends the process when a signal asked for that.
}

}  // namespace tarqo::lnx::input
