// Synthesised pointer and keyboard events, posted where a device's own would enter the system.
//
// An event is created first and posted after, because a failed creation is a failure of its own.
// Worker thread only; posting returns before anybody has received the event.
//
// Events carry the modifiers that they name and no others: a mouse, scroll or text event carries
// none, a key event exactly its own. What the user holds on the keyboard at that moment does not
// turn a click into a Control-click or a turn of the wheel into a zoom; it counts again afterwards.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "platform/geometry.h"
#include "platform/process_id.h"

namespace tarqo {

enum class MouseEventType { moved, leftDown, leftUp, leftDragged, rightDown, rightUp };

struct MouseEvent {
  MouseEventType type = MouseEventType::moved;
  Point at;
  int clickState = 0;  ///< Which click of a row this is, from 1; 0 for events that are no click.

  bool operator==(const MouseEvent&) const = default;
};

/// Modifier masks of `KeyEvent::modifiers`.
using Modifiers = std::uint64_t;
inline constexpr Modifiers kModifierShift = 0x20000;
inline constexpr Modifiers kModifierControl = 0x40000;
inline constexpr Modifiers kModifierAlternate = 0x80000;
inline constexpr Modifiers kModifierCommand = 0x100000;

/// A key by its virtual key code on the ANSI layout.
struct KeyEvent {
  std::uint16_t keyCode = 0;
  bool down = false;
  Modifiers modifiers = 0;

  bool operator==(const KeyEvent&) const = default;
};

/// A key that carries text of its own, whatever the keyboard layout: one grapheme cluster in UTF-8.
struct TextEvent {
  std::string text;
  bool down = false;

  bool operator==(const TextEvent&) const = default;
};

/// A turn of the wheel at the pointer's position, in pixels; positive moves the content down.
/// `sideways` is only used where `InputEvents::scrollsByDragging` is false; positive moves the
/// content to the right. One of them is 0.
struct ScrollEvent {
  std::int32_t pixels = 0;
  std::int32_t sideways = 0;
  /// What one click of the wheel moves there, `Accessibility::wheelStep`; empty when not known.
  std::optional<Size> step{};

  bool operator==(const ScrollEvent&) const = default;
};

using InputEvent = std::variant<MouseEvent, KeyEvent, TextEvent, ScrollEvent>;

/// An event that the system has made and that waits to be posted.
class CreatedEvent {
 public:
  virtual ~CreatedEvent() = default;
};

/// What a row of events shares. Whatever a row changed on the system (a key bound to a character)
/// is put back when its source is destroyed.
class EventSource {
 public:
  virtual ~EventSource() = default;
};

class InputEvents {
 public:
  virtual ~InputEvents() = default;

  /// A source for a row of events that belong together; `text` is all the text that the row will
  /// type, so that a backend can make it ready at once. Null when the system refuses; events can be
  /// created without one.
  [[nodiscard]] virtual std::unique_ptr<EventSource> makeSource(const std::string& text) = 0;

  /// Makes an event; null when the system cannot.
  [[nodiscard]] virtual std::unique_ptr<CreatedEvent> create(EventSource* source,
                                                             const InputEvent& event) = 0;

  /// Posts an event, whoever receives it: what lets go of a key or a button, and what moves the
  /// pointer while one is held or on its way.
  virtual void post(const CreatedEvent& event) = 0;

  /// Posts an event if `receiver` is the process that gets it, judged by the system at the moment
  /// of posting: for a key or text the process that keystrokes go to, whoever has a title bar lit;
  /// for the mouse the one whose window is uppermost at the event's place, for scrolling at the
  /// pointer's; in both cases nobody who has grabbed the device. False, with nothing posted, when
  /// another process would get it or that cannot be learnt. Scrolling by several clicks of a wheel
  /// is judged before each group of them that goes out together, and ends with the first refused.
  [[nodiscard]] virtual bool postTo(Pid receiver, const CreatedEvent& event) = 0;

  /// Whether content moves by being dragged on this system, as on a touch screen. Elsewhere a drag
  /// selects text or moves things, and all scrolling is the wheel's.
  [[nodiscard]] virtual bool scrollsByDragging() = 0;

  [[nodiscard]] virtual std::optional<Point> pointerLocation() = 0;
};

}  // namespace tarqo
