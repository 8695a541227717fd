#include "platform/linux/linux_input_events.h"

#include <xcb/xtest.h>

#include <algorithm>
#include <cmath>

namespace tarqo::lnx {
namespace {

constexpr std::uint8_t kLeftButton = 1;
constexpr std::uint8_t kRightButton = 3;

class PointerEvent final : public CreatedEvent {
 public:
  explicit PointerEvent(const MouseEvent& event) : event_(event) {}
  [[nodiscard]] const MouseEvent& event() const { return event_; }

 private:
  MouseEvent event_;
};

class PointerSource final : public EventSource {};

/// The pixel that a point lies in.
std::int16_t pixel(double coordinate) {
  return static_cast<std::int16_t>(std::clamp(std::floor(coordinate), -32768.0, 32767.0));
}

void fakeInput(XServer& server, std::uint8_t type, std::uint8_t detail, Point at) {
  xcb_test_fake_input(server.raw(), type, detail, XCB_CURRENT_TIME, server.root(), pixel(at.x),
                      pixel(at.y), 0);
}

void fakeMouse(XServer& server, const MouseEvent& event) {
  constexpr std::uint8_t kAbsolute = 0;
  // A button event has no position of its own: it happens where the pointer is.
  fakeInput(server, XCB_MOTION_NOTIFY, kAbsolute, event.at);
  switch (event.type) {
    case MouseEventType::moved:
    case MouseEventType::leftDragged:
      return;
    case MouseEventType::leftDown:
      return fakeInput(server, XCB_BUTTON_PRESS, kLeftButton, event.at);
    case MouseEventType::leftUp:
      return fakeInput(server, XCB_BUTTON_RELEASE, kLeftButton, event.at);
    case MouseEventType::rightDown:
      return fakeInput(server, XCB_BUTTON_PRESS, kRightButton, event.at);
    case MouseEventType::rightUp:
      return fakeInput(server, XCB_BUTTON_RELEASE, kRightButton, event.at);
  }
}

}  // namespace

std::unique_ptr<EventSource> LinuxInputEvents::makeSource(const std::string& text) {
  (void)text;
  return std::make_unique<PointerSource>();
}

std::unique_ptr<CreatedEvent> LinuxInputEvents::create(EventSource* source,
                                                       const InputEvent& event) {
  (void)source;
  const XServer* server = display_.server();
  const auto* mouse = std::get_if<MouseEvent>(&event);
  if (server == nullptr || !server->extensions().test || mouse == nullptr) {
    return nullptr;
  }
  return std::make_unique<PointerEvent>(*mouse);
}

void LinuxInputEvents::post(const CreatedEvent& event) {
  XServer* server = display_.server();
  const auto* pointer = dynamic_cast<const PointerEvent*>(&event);
  if (server == nullptr || !server->extensions().test || pointer == nullptr) {
    return;
  }
  fakeMouse(*server, pointer->event());
  server->sync();
}

std::optional<Point> LinuxInputEvents::pointerLocation() {
  XServer* server = display_.server();
  if (server == nullptr) {
    return std::nullopt;
  }
  const auto pointer =
      server->take<xcb_query_pointer_reply_t>(xcb_query_pointer(server->raw(), server->root()));
  if (!pointer) {
    return std::nullopt;
  }
  return Point{static_cast<double>(pointer->root_x), static_cast<double>(pointer->root_y)};
}

}  // namespace tarqo::lnx
