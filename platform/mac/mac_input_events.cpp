#include "platform/mac/mac_input_events.h"

#include <CoreGraphics/CoreGraphics.h>

#include <cstddef>
#include <span>
#include <utility>
#include <vector>

#include "platform/mac/mac_cf.h"
#include "platform/mac/mac_cf_text.h"

namespace tarqo::mac {
namespace {

static_assert(kModifierShift == kCGEventFlagMaskShift);
static_assert(kModifierControl == kCGEventFlagMaskControl);
static_assert(kModifierAlternate == kCGEventFlagMaskAlternate);
static_assert(kModifierCommand == kCGEventFlagMaskCommand);

constexpr CGEventFlags kNoModifiers = 0;

/// Quartz drops what a key event carries beyond this, and documents it nowhere.
constexpr std::size_t kMaxUnitsOfAKey = 20;

/// The key of events whose text counts and not their code.
constexpr CGKeyCode kTextKey = 0;

using Event = CfRef<CGEventRef>;

class MacSource final : public EventSource {
 public:
  explicit MacSource(CfRef<CGEventSourceRef> source) : source_(std::move(source)) {}
  [[nodiscard]] CGEventSourceRef get() const { return source_.get(); }

 private:
  CfRef<CGEventSourceRef> source_;
};

class MacEvent final : public CreatedEvent {
 public:
  MacEvent(std::vector<Event> events, const InputEvent& made)
      : events_(std::move(events)), made_(made) {}
  [[nodiscard]] const InputEvent& made() const { return made_; }
  /// In the order to post them, one after the other.
  [[nodiscard]] const std::vector<Event>& events() const { return events_; }

 private:
  std::vector<Event> events_;
  InputEvent made_;
};

CGEventType typeOf(MouseEventType type) {
  switch (type) {
    case MouseEventType::moved:
      return kCGEventMouseMoved;
    case MouseEventType::leftDown:
      return kCGEventLeftMouseDown;
    case MouseEventType::leftUp:
      return kCGEventLeftMouseUp;
    case MouseEventType::leftDragged:
      return kCGEventLeftMouseDragged;
    case MouseEventType::rightDown:
      return kCGEventRightMouseDown;
    case MouseEventType::rightUp:
      return kCGEventRightMouseUp;
  }
  return kCGEventMouseMoved;
}

CGMouseButton buttonOf(MouseEventType type) {
  const bool right = type == MouseEventType::rightDown || type == MouseEventType::rightUp;
  return right ? kCGMouseButtonRight : kCGMouseButtonLeft;
}

/// Goes to whoever got the button that is down.
bool followsButton(MouseEventType type) {
  return type == MouseEventType::leftUp || type == MouseEventType::rightUp ||
         type == MouseEventType::leftDragged;
}

/// What an event presses or lets go of; none for those that do neither.
struct Stroke {
  std::string name;
  bool down = false;
};

struct ToStroke {
  std::optional<Stroke> operator()(const MouseEvent& mouse) const {
    switch (mouse.type) {
      case MouseEventType::leftDown:
      case MouseEventType::leftUp:
        return Stroke{"left button", mouse.type == MouseEventType::leftDown};
      case MouseEventType::rightDown:
      case MouseEventType::rightUp:
        return Stroke{"right button", mouse.type == MouseEventType::rightDown};
      case MouseEventType::moved:
      case MouseEventType::leftDragged:
        break;
    }
    return std::nullopt;
  }
  std::optional<Stroke> operator()(const KeyEvent& key) const {
    return Stroke{"key " + std::to_string(key.keyCode), key.down};
  }
  std::optional<Stroke> operator()(const TextEvent& text) const {
    return Stroke{"text", text.down};
  }
  std::optional<Stroke> operator()(const ScrollEvent& /*scroll*/) const { return std::nullopt; }
};

bool isHighSurrogate(UniChar unit) { return unit >= 0xD800 && unit < 0xDC00; }

/// What one key can carry, off the front of `rest`. No surrogate pair is torn.
std::span<const UniChar> takePiece(std::span<const UniChar>& rest) {
  std::size_t length = std::min(rest.size(), kMaxUnitsOfAKey);
  if (length < rest.size() && isHighSurrogate(rest[length - 1])) {
    --length;
  }
  const auto piece = rest.first(length);
  rest = rest.subspan(length);
  return piece;
}

/// Makes the events that an event of the interface is posted as; empty when one cannot be made.
class Maker {
 public:
  explicit Maker(CGEventSourceRef source) : source_(source) {}

  std::vector<Event> operator()(const MouseEvent& mouse) const {
    const Event event = adopt(CGEventCreateMouseEvent(
        source_, typeOf(mouse.type), {mouse.at.x, mouse.at.y}, buttonOf(mouse.type)));
    if (!event) {
      return {};
    }
    if (mouse.clickState != 0) {
      // On the event that goes up as well: it ends a click only with the number that began it.
      CGEventSetIntegerValueField(event.get(), kCGMouseEventClickState, mouse.clickState);
    }
    return only(event, kNoModifiers);
  }

  std::vector<Event> operator()(const KeyEvent& key) const {
    return only(adopt(CGEventCreateKeyboardEvent(source_, key.keyCode, key.down)), key.modifiers);
  }

  std::vector<Event> operator()(const TextEvent& text) const {
    const std::vector<UniChar> units = utf16Of(text.text);
    std::span<const UniChar> rest = units;
    std::vector<Event> events;
    // Without text the key's code would count, which is that of the letter A.
    while (!rest.empty()) {
      const std::span<const UniChar> piece = takePiece(rest);
      const bool last = rest.empty();
      if (text.down && !addKey(piece, true, events)) {
        return {};
      }
      if (text.down != last && !addKey(piece, false, events)) {
        return {};
      }
    }
    return events;
  }

  std::vector<Event> operator()(const ScrollEvent& scroll) const {
    // Not CGEventCreateScrollWheelEvent, whose variadic arguments go by other rules on arm64.
    constexpr std::uint32_t kWheels = 1;
    return only(adopt(CGEventCreateScrollWheelEvent2(source_, kCGScrollEventUnitPixel, kWheels,
                                                     scroll.pixels, 0, 0)),
                kNoModifiers);
  }

 private:
  /// A new event takes over the modifiers that are held at its source, so they are always set.
  static std::vector<Event> only(const Event& event, CGEventFlags modifiers) {
    if (!event) {
      return {};
    }
    CGEventSetFlags(event.get(), modifiers);
    return {event};
  }

  bool addKey(std::span<const UniChar> piece, bool down, std::vector<Event>& events) const {
    const Event event = adopt(CGEventCreateKeyboardEvent(source_, kTextKey, down));
    if (!event) {
      return false;
    }
    CGEventSetFlags(event.get(), kNoModifiers);
    // On the event that goes up too: some applications read the text there.
    CGEventKeyboardSetUnicodeString(event.get(), piece.size(), piece.data());
    events.push_back(event);
    return true;
  }

  CGEventSourceRef source_;
};

}  // namespace

std::unique_ptr<EventSource> MacInputEvents::makeSource(const std::string& /*text*/) {
  CfRef<CGEventSourceRef> source =
      adopt(CGEventSourceCreate(kCGEventSourceStateCombinedSessionState));
  return source ? std::make_unique<MacSource>(std::move(source)) : nullptr;
}

std::unique_ptr<CreatedEvent> MacInputEvents::create(EventSource* source, const InputEvent& event) {
  const auto* ours = dynamic_cast<MacSource*>(source);
  std::vector<Event> events = std::visit(Maker(ours == nullptr ? nullptr : ours->get()), event);
  return events.empty() ? nullptr : std::make_unique<MacEvent>(std::move(events), event);
}

void MacInputEvents::post(const CreatedEvent& event) {
  if (const auto* ours = dynamic_cast<const MacEvent*>(&event)) {
    notePressed(ours->made());
    for (const Event& each : ours->events()) {
      CGEventPost(kCGHIDEventTap, each.get());
    }
    noteReleased(ours->made());
  }
}

void MacInputEvents::notePressed(const InputEvent& event) {
  const std::optional<Stroke> stroke = std::visit(ToStroke{}, event);
  if (stroke && stroke->down) {
    down_.insert(stroke->name);
    if (!signals_) {
      signals_.emplace();
    }
  }
}

void MacInputEvents::noteReleased(const InputEvent& event) {
  const std::optional<Stroke> stroke = std::visit(ToStroke{}, event);
  if (stroke && !stroke->down) {
    down_.erase(stroke->name);
    if (down_.empty()) {
      signals_.reset();
    }
  }
}

bool MacInputEvents::postTo(Pid receiver, const CreatedEvent& event) {
  const auto* ours = dynamic_cast<const MacEvent*>(&event);
  if (ours == nullptr) {
    return false;
  }
  bool isReceived = false;
  if (const auto* mouse = std::get_if<MouseEvent>(&ours->made())) {
    isReceived = followsButton(mouse->type) || reaches(receiver, mouse->at);
  } else if (std::holds_alternative<ScrollEvent>(ours->made())) {
    const std::optional<Point> pointer = pointerLocation();
    isReceived = pointer && reaches(receiver, *pointer);
  } else {
    isReceived = frontmost_() == receiver;
  }
  if (isReceived) {
    post(event);
  }
  return isReceived;
}

bool MacInputEvents::reaches(Pid receiver, Point place) const {
  for (const WindowInfo& window : windows_()) {
    const bool counts = window.layer == 0 || window.ownerPid == receiver;
    if (counts && window.bounds && window.bounds->contains(place) && window.alpha.value_or(1) > 0) {
      return window.ownerPid == receiver;
    }
  }
  return false;
}

std::optional<Point> MacInputEvents::pointerLocation() {
  // A fresh event happens where the pointer is.
  const Event event = adopt(CGEventCreate(nullptr));
  if (!event) {
    return std::nullopt;
  }
  const CGPoint at = CGEventGetLocation(event.get());
  return Point{at.x, at.y};
}

}  // namespace tarqo::mac
