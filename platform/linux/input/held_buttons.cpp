#include "platform/linux/input/held_buttons.h"

#include <xcb/xtest.h>

#include <algorithm>

namespace tarqo::lnx::input {
namespace {

void fakeButton(x11::Server& server, std::uint8_t type, std::uint8_t button) {
  xcb_test_fake_input(server.raw(), type, button, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
}

}  // namespace

void HeldButtons::press(x11::Server& server, std::uint8_t button) {
  if (!signals_) {
    signals_.emplace();
  }
  keyboard_.setAsideForPointer(server);
  down_.push_back(button);
  fakeButton(server, XCB_BUTTON_PRESS, button);
  server.sync();
}

void HeldButtons::release(x11::Server& server, std::uint8_t button) {
  fakeButton(server, XCB_BUTTON_RELEASE, button);
  server.sync();
  down_.erase(std::remove(down_.begin(), down_.end(), button), down_.end());
  if (down_.empty()) {
    keyboard_.putBack();
    signals_.reset();
  }
}

void HeldButtons::click(x11::Server& server, std::uint8_t button, int count) {
  keyboard_.setAsideForPointer(server);
  for (int click = 0; click < count; ++click) {
    fakeButton(server, XCB_BUTTON_PRESS, button);
    fakeButton(server, XCB_BUTTON_RELEASE, button);
  }
  if (down_.empty()) {
    keyboard_.putBack();
  }
}

bool HeldButtons::isDown(std::uint8_t button) const {
  return std::find(down_.begin(), down_.end(), button) != down_.end();
}

void HeldButtons::releaseAll() {
  if (down_.empty()) {
    return;
  }
  x11::Server* server = display_.server();
  if (server != nullptr && server->extensions().test) {
    std::for_each(down_.begin(), down_.end(),
                  [&](auto button) { fakeButton(*server, XCB_BUTTON_RELEASE, button); });
    server->sync();
  }
  down_.clear();
  keyboard_.putBack();
  signals_.reset();
}

}  // namespace tarqo::lnx::input
