#include "platform/linux/linux_held_buttons.h"

#include <xcb/xtest.h>

#include <algorithm>

namespace tarqo::lnx {
namespace {

void fakeButton(XServer& server, std::uint8_t type, std::uint8_t button) {
  xcb_test_fake_input(server.raw(), type, button, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
}

}  // namespace

void HeldButtons::press(XServer& server, std::uint8_t button) {
  if (!signals_) {
    signals_.emplace();
  }
  down_.push_back(button);
  fakeButton(server, XCB_BUTTON_PRESS, button);
  server.sync();
}

void HeldButtons::release(XServer& server, std::uint8_t button) {
  fakeButton(server, XCB_BUTTON_RELEASE, button);
  server.sync();
  down_.erase(std::remove(down_.begin(), down_.end(), button), down_.end());
  if (down_.empty()) {
    signals_.reset();
  }
}

void HeldButtons::releaseAll() {
  XServer* server = down_.empty() ? nullptr : display_.server();
  if (server != nullptr && server->extensions().test) {
    std::for_each(down_.begin(), down_.end(),
                  [&](auto button) { fakeButton(*server, XCB_BUTTON_RELEASE, button); });
    server->sync();
  }
  down_.clear();
  signals_.reset();
}

}  // namespace tarqo::lnx
