#include "platform/linux/atspi/keyboard_focus.h"

#include <algorithm>

#include "platform/linux/atspi/translate/visibility.h"

namespace tarqo::lnx::atspi {
namespace {

constexpr auto kFocusPoll = std::chrono::milliseconds(10);

/// For the application to report a focus that it was given.
constexpr auto kFocusArrives = std::chrono::milliseconds(800);

}  // namespace

bool KeyboardFocus::grab(const ObjectHandle& object) {
  const PropertiesPtr properties = reader_.read(object, Property::basics);
  if (properties && hasFocus(*properties, reader_.toolkitOf(object))) {
    return true;  // A field of GTK 3 selects all its text whenever it is given the focus.
  }
  const Toolkit toolkit = reader_.toolkitOf(object);
  return pending_.performWithinTimeout(object, toolkit,
                                       {{kComponent, "GrabFocus"}, nullptr, false}) ||
         (reader_.toolkitOf(object) == Toolkit::gtk4 && click(object));
}

bool KeyboardFocus::click(const ObjectHandle& object) {
  const PropertiesPtr properties = reader_.read(object, Property::basics | Property::extents);
  if (!properties || !isGrabbedByClick(*properties) || !isInKeyWindow(object)) {
    return false;
  }
  if (properties->has(State::focused)) {
    return true;
  }
  const std::optional<Rect> place = relations_.frameOf(object, *properties);
  const std::optional<Element> there = place ? hitTest_.elementAt(place->center()) : std::nullopt;
  if (!there || handleOf(*there)->ref != object.ref) {
    return false;
  }
  const Point centre = place->center();
  return postPair(nullptr, object.pid, MouseEvent{MouseEventType::leftDown, centre, 1},
                  MouseEvent{MouseEventType::leftUp, centre, 1}) &&
         await(object);
}

bool KeyboardFocus::isGrabbedByClick(const Properties& properties) {
  return input_ != nullptr && properties.has(State::editable) && properties.has(Interface::text);
}

bool KeyboardFocus::isInKeyWindow(const ObjectHandle& object) {
  // Not from the reader: what it knows of the windows is of when the call began.
  const std::optional<Toplevel> top = reader_.toplevelOf(object);
  if (!top || !top->window) {
    return false;
  }
  return std::ranges::any_of(reader_.locator().windowsOf(object.pid), [&](const auto& window) {
    return window.number == top->window->number && window.active;
  });
}

bool KeyboardFocus::postKey(const ObjectHandle& object, EventSource* source, const InputEvent& down,
                            const InputEvent& up) {
  return isInKeyWindow(object) && postPair(source, object.pid, down, up);
}

/// Both events exist before the first goes out, so that nothing is ever left held down.
bool KeyboardFocus::postPair(EventSource* source, Pid receiver, const InputEvent& down,
                             const InputEvent& up) {
  const std::unique_ptr<CreatedEvent> first = input_->create(source, down);
  const std::unique_ptr<CreatedEvent> second = input_->create(source, up);
  if (!first || !second || !input_->postTo(receiver, *first)) {
    return false;
  }
  input_->post(*second);
  return true;
}

bool KeyboardFocus::await(const ObjectHandle& object) {
  const Instant deadline = reader_.clock().now() + kFocusArrives;
  while (reader_.clock().now() < deadline) {
    const PropertiesPtr properties = reader_.read(object, Property::basics);
    if (!properties) {
      return false;
    }
    if (properties->has(State::focused)) {
      return true;
    }
    reader_.clock().sleep(kFocusPoll);
  }
  return false;
}

}  // namespace tarqo::lnx::atspi
