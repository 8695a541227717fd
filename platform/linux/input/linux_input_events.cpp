#include "platform/linux/input/linux_input_events.h"

#include <xcb/xtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <functional>

#include "platform/linux/input/event_receivers.h"
#include "platform/linux/input/fake_keyboard.h"
#include "platform/linux/input/held_buttons.h"
#include "platform/linux/input/key_sequence.h"
#include "platform/linux/x11/server_grab.h"
#include "platform/linux/x11/windows.h"

namespace tarqo::lnx::input {

/// Server state changed by one group of events; restored on destruction.
struct EventGroup {
  EventGroup(x11::Display& display, Clock& clock, const std::string& text)
      : keyboard(display), keys(display, clock, keyboard, text), buttons(display, keyboard) {}

  void end() {
    buttons.releaseAll();
    keys.end();
  }

  FakeKeyboard keyboard;
  KeySequence keys;
  HeldButtons buttons;
};

namespace {

constexpr std::uint8_t kLeftButton = 1;
constexpr std::uint8_t kRightButton = 3;
constexpr std::uint8_t kWheelUp = 4;
constexpr std::uint8_t kWheelDown = 5;
constexpr std::uint8_t kWheelLeft = 6;
constexpr std::uint8_t kWheelRight = 7;

/// After the first click of the wheel Chromium takes one to two frames of its drawing to find out
/// what to scroll, and loses most of the clicks that come meanwhile: 10 clicks at once often moved
/// a page by one. With 20 ms between no click was lost; this is more, for a busy machine.
constexpr std::chrono::milliseconds kAfterFirstClick{50};

/// A tiny area would turn into hundreds of clicks.
constexpr double kSmallestStep = 10;

constexpr std::chrono::milliseconds kGrabPasses{150};
constexpr std::chrono::milliseconds kGrabPoll{5};

/// How often an event is prepared again because the keyboard has changed since.
constexpr int kMaxRenewals = 5;

class GroupSource final : public EventSource {
 public:
  GroupSource(x11::Display& display, Clock& clock, const std::string& text)
      : group_(std::make_shared<EventGroup>(display, clock, text)) {}
  GroupSource(const GroupSource&) = delete;
  GroupSource& operator=(const GroupSource&) = delete;
  /// Restores what the group changed, even when an event of it still exists.
  ~GroupSource() override { group_->end(); }

  [[nodiscard]] const std::shared_ptr<EventGroup>& group() const { return group_; }

 private:
  std::shared_ptr<EventGroup> group_;
};

class GroupedEvent final : public CreatedEvent {
 public:
  GroupedEvent(InputEvent event, std::shared_ptr<EventGroup> group)
      : event_(std::move(event)), group_(std::move(group)) {}

  [[nodiscard]] const InputEvent& event() const { return event_; }
  [[nodiscard]] EventGroup& group() const { return *group_; }

 private:
  InputEvent event_;
  std::shared_ptr<EventGroup> group_;
};

void fakeMotion(x11::Server& server, Point at) {
  constexpr std::uint8_t kAbsolute = 0;
  xcb_test_fake_input(server.raw(), XCB_MOTION_NOTIFY, kAbsolute, XCB_CURRENT_TIME, server.root(),
                      x11::pixelOf(at.x), x11::pixelOf(at.y), 0);
}

std::uint8_t buttonOf(MouseEventType type) {
  const bool isRight = type == MouseEventType::rightDown || type == MouseEventType::rightUp;
  return isRight ? kRightButton : kLeftButton;
}

void fakeMouse(x11::Server& server, const MouseEvent& event, HeldButtons& buttons) {
  const std::uint8_t button = buttonOf(event.type);
  const bool isUp = event.type == MouseEventType::leftUp || event.type == MouseEventType::rightUp;
  if (isUp && !buttons.isDown(button)) {
    return;
  }
  // A button event has no position of its own: it happens where the pointer is.
  fakeMotion(server, event.at);
  if (isUp) {
    buttons.release(server, button);
  } else if (event.type == MouseEventType::leftDown || event.type == MouseEventType::rightDown) {
    buttons.press(server, button);
  }
}

/// Calls `judge` and, if the event reaches its receiver, `deed`, both within one server grab; false
/// when it would go elsewhere. Somebody's grab of the device may be that of a window manager which
/// is about to pass an event on, or of a menu that is about to close, so it is waited for during
/// `kGrabPasses`.
bool doJudged(x11::Display& display, Clock& clock, const std::function<Reach(x11::Server&)>& judge,
              const std::function<void(x11::Server&)>& deed) {
  const Instant deadline = clock.now() + kGrabPasses;
  for (;;) {
    x11::Server* server = display.server();
    if (server == nullptr) {
      return false;
    }
    {
      const x11::ServerGrab grab(*server);
      const Reach reach = judge(*server);
      if (reach == Reach::receiver) {
        deed(*server);
        return true;
      }
      if (reach == Reach::elsewhere || clock.now() >= deadline) {
        return false;
      }
    }
    clock.sleep(kGrabPoll);
  }
}

/// Where the event goes. Without a `receiver` it counts as reached, whoever gets the event.
Reach reachOf(x11::Server& server, std::optional<Pid> receiver, const InputEvent& event) {
  if (!receiver) {
    return Reach::receiver;
  }
  if (const auto* mouse = std::get_if<MouseEvent>(&event)) {
    return reachOfPointer(server, *receiver, mouse->at);
  }
  if (std::holds_alternative<ScrollEvent>(event)) {
    return reachOfPointer(server, *receiver, std::nullopt);
  }
  return reachOfKeys(server, *receiver);
}

/// Posts each kind of event in its own way; false when it would have gone elsewhere.
class Deliverer {
 public:
  Deliverer(x11::Display& display, Clock& clock, std::optional<Pid> receiver,
            const GroupedEvent& event)
      : display_(display), clock_(clock), receiver_(receiver), event_(event) {}

  bool operator()(const MouseEvent& mouse) const {
    return judged([&](x11::Server& server) { fakeMouse(server, mouse, event_.group().buttons); });
  }

  bool operator()(const ScrollEvent& scroll) const {
    const bool isSideways = scroll.sideways != 0;
    const std::uint8_t button = isSideways ? (scroll.sideways > 0 ? kWheelLeft : kWheelRight)
                                           : (scroll.pixels > 0 ? kWheelUp : kWheelDown);
    const Size step = scroll.step.value_or(Size{kPixelsPerClick, kPixelsPerClick});
    const int clicks = isSideways ? wheelClicks(scroll.sideways, step.width)
                                  : wheelClicks(scroll.pixels, step.height);
    const auto turn = [&](int count) {
      return judged(
          [&](x11::Server& server) { event_.group().buttons.click(server, button, count); });
    };
    if (!turn(1)) {
      return false;
    }
    if (clicks > 1) {
      clock_.sleep(kAfterFirstClick);
    }
    return clicks == 1 || turn(clicks - 1);
  }

  bool operator()(const TextEvent& text) const { return type(text); }
  bool operator()(const KeyEvent& key) const { return type(key); }

 private:
  bool judged(const std::function<void(x11::Server&)>& deed) const {
    return doJudged(
        display_, clock_,
        [&](x11::Server& server) { return reachOf(server, receiver_, event_.event()); }, deed);
  }

  template <typename Event>
  bool type(const Event& event) const {
    KeySequence& keys = event_.group().keys;
    for (int attempt = 0; attempt < kMaxRenewals; ++attempt) {
      bool posted = false;
      if (!judged([&](x11::Server& server) { posted = keys.post(server, event); })) {
        return false;
      }
      if (posted) {
        return true;
      }
      if (!keys.renew(event)) {
        return false;
      }
    }
    return false;
  }

  x11::Display& display_;
  Clock& clock_;
  std::optional<Pid> receiver_;
  const GroupedEvent& event_;
};

}  // namespace

int wheelClicks(std::int32_t pixels, double step) {
  const double clicks = std::abs(static_cast<double>(pixels)) / std::max(step, kSmallestStep);
  return std::max(static_cast<int>(std::lround(clicks)), 1);
}

std::unique_ptr<EventSource> LinuxInputEvents::makeSource(const std::string& text) {
  return std::make_unique<GroupSource>(display_, clock_, text);
}

std::unique_ptr<CreatedEvent> LinuxInputEvents::create(EventSource* source,
                                                       const InputEvent& event) {
  const x11::Server* server = display_.server();
  if (server == nullptr || !server->extensions().test) {
    return nullptr;
  }
  const auto* owner = dynamic_cast<GroupSource*>(source);
  const std::shared_ptr<EventGroup> group = owner != nullptr ? owner->group() : looseGroup();
  if (const auto* text = std::get_if<TextEvent>(&event)) {
    if (owner == nullptr || !group->keys.prepare(*text)) {
      return nullptr;
    }
  } else if (const auto* key = std::get_if<KeyEvent>(&event)) {
    if (!group->keys.prepare(*key)) {
      return nullptr;
    }
  }
  return std::make_unique<GroupedEvent>(event, group);
}

std::shared_ptr<EventGroup> LinuxInputEvents::looseGroup() {
  std::shared_ptr<EventGroup> group = loose_.lock();
  if (!group) {
    group = std::make_shared<EventGroup>(display_, clock_, "");
    loose_ = group;
  }
  return group;
}

void LinuxInputEvents::post(const CreatedEvent& event) {
  static_cast<void>(deliver(std::nullopt, event));
}

bool LinuxInputEvents::postTo(Pid receiver, const CreatedEvent& event) {
  return deliver(receiver, event);
}

bool LinuxInputEvents::deliver(std::optional<Pid> receiver, const CreatedEvent& event) {
  x11::Server* server = display_.server();
  const auto* created = dynamic_cast<const GroupedEvent*>(&event);
  if (server == nullptr || !server->extensions().test || created == nullptr) {
    return false;
  }
  const Deliverer deliverer{display_, clock_, receiver, *created};
  const bool delivered = std::visit(deliverer, created->event());
  server = display_.server();
  return delivered && server != nullptr && server->sync();
}

std::optional<Point> LinuxInputEvents::pointerLocation() {
  x11::Server* server = display_.server();
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

}  // namespace tarqo::lnx::input
