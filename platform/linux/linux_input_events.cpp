#include "platform/linux/linux_input_events.h"

#include <xcb/xtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <thread>

#include "platform/linux/linux_held_buttons.h"
#include "platform/linux/linux_key_row.h"

namespace tarqo::lnx {

/// Whatever events that belong together change on the server. Ends with what it is destroyed with.
struct InputGroup {
  InputGroup(XDisplay& display, const std::string& text) : keys(display, text), buttons(display) {}

  void end() {
    buttons.releaseAll();
    keys.end();
  }

  KeyRow keys;
  HeldButtons buttons;
};

namespace {

constexpr std::uint8_t kLeftButton = 1;
constexpr std::uint8_t kRightButton = 3;
constexpr std::uint8_t kWheelUp = 4;
constexpr std::uint8_t kWheelDown = 5;

/// Chromium looks up what a first click scrolls, in one to two frames of its drawing, and forgets
/// most of the clicks that come meanwhile: 10 clicks at once often moved a page by one. From 20 ms
/// on none was lost; this is more, for a busy machine.
constexpr std::chrono::milliseconds kAfterFirstClick{50};

class RowSource final : public EventSource {
 public:
  RowSource(XDisplay& display, const std::string& text)
      : row_(std::make_shared<InputGroup>(display, text)) {}
  RowSource(const RowSource&) = delete;
  RowSource& operator=(const RowSource&) = delete;
  /// Puts back what the row changed, even when an event of it still exists.
  ~RowSource() override { row_->end(); }

  [[nodiscard]] const std::shared_ptr<InputGroup>& row() const { return row_; }

 private:
  std::shared_ptr<InputGroup> row_;
};

class XEvent final : public CreatedEvent {
 public:
  XEvent(InputEvent event, std::shared_ptr<InputGroup> row)
      : event_(std::move(event)), row_(std::move(row)) {}

  [[nodiscard]] const InputEvent& event() const { return event_; }
  [[nodiscard]] InputGroup& row() const { return *row_; }

 private:
  InputEvent event_;
  std::shared_ptr<InputGroup> row_;
};

/// The pixel that a point lies in.
std::int16_t pixel(double coordinate) {
  return static_cast<std::int16_t>(std::clamp(std::floor(coordinate), -32768.0, 32767.0));
}

void fakeInput(XServer& server, std::uint8_t type, std::uint8_t detail, Point at) {
  xcb_test_fake_input(server.raw(), type, detail, XCB_CURRENT_TIME, server.root(), pixel(at.x),
                      pixel(at.y), 0);
}

void fakeMouse(XServer& server, const MouseEvent& event, HeldButtons& buttons) {
  constexpr std::uint8_t kAbsolute = 0;
  // A button event has no position of its own: it happens where the pointer is.
  fakeInput(server, XCB_MOTION_NOTIFY, kAbsolute, event.at);
  switch (event.type) {
    case MouseEventType::moved:
    case MouseEventType::leftDragged:
      return;
    case MouseEventType::leftDown:
      return buttons.press(server, kLeftButton);
    case MouseEventType::leftUp:
      return buttons.release(server, kLeftButton);
    case MouseEventType::rightDown:
      return buttons.press(server, kRightButton);
    case MouseEventType::rightUp:
      return buttons.release(server, kRightButton);
  }
}

void fakeWheel(XServer& server, const ScrollEvent& event) {
  const std::uint8_t button = event.pixels > 0 ? kWheelUp : kWheelDown;
  const int clicks = wheelClicks(event.pixels);
  for (int click = 0; click < clicks; ++click) {
    if (click == 1) {
      server.sync();
      std::this_thread::sleep_for(kAfterFirstClick);
    }
    fakeInput(server, XCB_BUTTON_PRESS, button, {});
    fakeInput(server, XCB_BUTTON_RELEASE, button, {});
  }
}

}  // namespace

int wheelClicks(std::int32_t pixels) {
  const double clicks = std::abs(static_cast<double>(pixels)) / kPixelsPerClick;
  return std::max(static_cast<int>(std::lround(clicks)), 1);
}

std::unique_ptr<EventSource> LinuxInputEvents::makeSource(const std::string& text) {
  return std::make_unique<RowSource>(display_, text);
}

std::unique_ptr<CreatedEvent> LinuxInputEvents::create(EventSource* source,
                                                       const InputEvent& event) {
  const XServer* server = display_.server();
  if (server == nullptr || !server->extensions().test) {
    return nullptr;
  }
  const auto* owner = dynamic_cast<RowSource*>(source);
  const std::shared_ptr<InputGroup> row = owner != nullptr ? owner->row() : looseRow();
  if (const auto* text = std::get_if<TextEvent>(&event)) {
    if (owner == nullptr || !row->keys.prepare(*text)) {
      return nullptr;
    }
  } else if (const auto* key = std::get_if<KeyEvent>(&event)) {
    if (!row->keys.prepare(*key)) {
      return nullptr;
    }
  }
  return std::make_unique<XEvent>(event, row);
}

std::shared_ptr<InputGroup> LinuxInputEvents::looseRow() {
  std::shared_ptr<InputGroup> row = loose_.lock();
  if (!row) {
    row = std::make_shared<InputGroup>(display_, "");
    loose_ = row;
  }
  return row;
}

void LinuxInputEvents::post(const CreatedEvent& event) {
  XServer* server = display_.server();
  const auto* created = dynamic_cast<const XEvent*>(&event);
  if (server == nullptr || !server->extensions().test || created == nullptr) {
    return;
  }
  if (const auto* mouse = std::get_if<MouseEvent>(&created->event())) {
    fakeMouse(*server, *mouse, created->row().buttons);
  } else if (const auto* scroll = std::get_if<ScrollEvent>(&created->event())) {
    fakeWheel(*server, *scroll);
  } else if (const auto* text = std::get_if<TextEvent>(&created->event())) {
    return created->row().keys.post(*text);
  } else if (const auto* key = std::get_if<KeyEvent>(&created->event())) {
    return created->row().keys.post(*key);
  }
  server->sync();
}

bool LinuxInputEvents::postTo(Pid /*receiver*/, const CreatedEvent& event) {
  post(event);
  return true;
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
