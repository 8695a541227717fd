#include "platform/linux/input/fake_keyboard.h"

#include <xcb/xtest.h>

#include <utility>

#include "platform/linux/input/keyboard_map.h"
#include "platform/linux/x11/server_grab.h"

namespace tarqo::lnx::input {
namespace {

void fakeKey(x11::Server& server, std::uint8_t type, xcb_keycode_t key) {
  xcb_test_fake_input(server.raw(), type, key, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
}

}  // namespace

void FakeKeyboard::release(x11::Server& server, xcb_keycode_t key) {
  fakeKey(server, XCB_KEY_RELEASE, key);
  if (const auto own = own_.find(key); own != own_.end()) {
    ++own->second;
  }
}

// XTEST's keyboard has its own state. A key that was pressed again for the user and that they have
// released since still counts as down there, and a press alone would count as a repetition.
void FakeKeyboard::press(x11::Server& server, xcb_keycode_t key) {
  release(server, key);
  fakeKey(server, XCB_KEY_PRESS, key);
  if (const auto own = own_.find(key); own != own_.end()) {
    --own->second;
  }
}

void FakeKeyboard::setAside(x11::Server& server, std::optional<xcb_keycode_t> key) {
  if (!own_.empty()) {
    return;
  }
  const HeldKeys held = heldKeys(server);
  for (const xcb_keycode_t locking : held.locking) {
    release(server, locking);
  }
  if (!held.modifying.empty()) {
    signals_.emplace();
    watch_.emplace(display_);
  }
  for (const xcb_keycode_t modifying : held.modifying) {
    own_.emplace(modifying, 0);
    release(server, modifying);
  }
  if (key && held.isDown(*key)) {
    own_.erase(*key);
    release(server, *key);
  }
}

void FakeKeyboard::setAsideForPointer(x11::Server& server) {
  if (!server.extensions().keyboard) {
    return;
  }
  setAside(server);
  locks_ |= switchStickyKeysOff(server);
  if (locks_ != 0 && !signals_) {
    signals_.emplace();
  }
}

void FakeKeyboard::putBack() {
  x11::Server* server = own_.empty() && locks_ == 0 ? nullptr : display_.server();
  if (server != nullptr && server->extensions().test) {
    const x11::ServerGrab grab(*server);
    const auto releases = watch_ ? watch_->releases(*server) : std::map<xcb_keycode_t, int>();
    const auto own = std::exchange(own_, {});
    for (const auto& [key, byUs] : own) {
      const auto all = releases.find(key);
      if (all == releases.end() || all->second <= byUs) {
        press(*server, key);
      }
    }
    switchLocksOn(*server, locks_);
    server->sync();
  }
  own_.clear();
  locks_ = 0;
  watch_.reset();
  signals_.reset();
}

}  // namespace tarqo::lnx::input
