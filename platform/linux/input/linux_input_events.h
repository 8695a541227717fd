// Pointer and keyboard events by the XTEST extension, which enter the X server where a device's own
// would.
#pragma once

#include "platform/clock.h"
#include "platform/input_events.h"
#include "platform/linux/x11/connection.h"

namespace tarqo::lnx::input {

struct EventGroup;

/// How many pixels of scrolling count as one click of the wheel where nobody knows better. X11
/// knows clicks only.
inline constexpr int kPixelsPerClick = 40;

/// The number of clicks for so many pixels, whatever the direction, when one moves by `step`: the
/// nearest, but at least one.
[[nodiscard]] int wheelClicks(std::int32_t pixels, double step = kPixelsPerClick);

/// `clickState` is ignored: X11 clients count clicks themselves, by time and place. The events of a
/// source are one group: what they change on the server is restored when the source is destroyed.
/// Events without a source share one group, restored when the last of them is destroyed; so create
/// what goes down together with what comes up. Text needs a source. Signals that ask the process to
/// end wait while a button is down, and from a keyboard event's creation to the end of its group.
/// Creating a keyboard event may wait until applications have read earlier ones, and so may
/// destroying a source. See `KeySequence`.
///
/// For an event with a receiver, the check of who gets it and the event itself happen within one
/// grab of the server; event_receivers.h says how that is judged. While somebody else has grabbed
/// the device, posting tries again for 150 ms. Posting more than one click of the wheel takes 50
/// ms, and is judged twice; typing on a keyboard that has been changed takes 40 ms or more.
class LinuxInputEvents final : public InputEvents {
 public:
  LinuxInputEvents(x11::Display& display, Clock& clock) : display_(display), clock_(clock) {}

  std::unique_ptr<EventSource> makeSource(const std::string& text) override;
  std::unique_ptr<CreatedEvent> create(EventSource* source, const InputEvent& event) override;
  void post(const CreatedEvent& event) override;
  bool postTo(Pid receiver, const CreatedEvent& event) override;
  bool scrollsByDragging() override { return false; }
  std::optional<Point> pointerLocation() override;

 private:
  /// Posts an event to `receiver`; without one, to whoever gets it.
  bool deliver(std::optional<Pid> receiver, const CreatedEvent& event);
  /// The group of the events without a source; lives as long as one of them.
  std::shared_ptr<EventGroup> looseGroup();

  x11::Display& display_;
  Clock& clock_;
  std::weak_ptr<EventGroup> loose_;
};

}  // namespace tarqo::lnx::input
