// Pointer and keyboard events by the XTEST extension, which enter the X server where a device's own
// would.
#pragma once

#include "platform/input_events.h"
#include "platform/linux/x11/x_display.h"

namespace tarqo::lnx {

struct InputGroup;

/// How many pixels of scrolling count as one click of the wheel. X11 knows clicks only; a click
/// moves 30 to 36 pixels in GTK 3 and GTK 4, three rows in Qt, 120 pixels in Chromium.
inline constexpr int kPixelsPerClick = 40;

/// The number of clicks for so many pixels, whatever the direction: the nearest, but at least one.
[[nodiscard]] int wheelClicks(std::int32_t pixels);

/// The click state of a mouse event needs no saying: X11 programs count the clicks of a row
/// themselves, by time and place. Text needs a source. Events without one share what they change on
/// the server, and put it back when the last of them is destroyed: what goes down is created
/// together with what comes up. Signals that ask the process to end wait while a button is down,
/// and from a keyboard event's creation to the end of its row. Creating a keyboard event may wait
/// for applications to have read those before; destroying a source too. See `KeyRow`.
///
/// An event to a receiver is judged and posted within one grab of the server: see
/// event_receivers.h for how, and for whose a grab of a device is taken for. While somebody
/// else has the device it is tried again for 150 ms. Posting more than one click of the wheel takes
/// 50 ms, and is judged twice; typing on a keyboard that was changed takes 40 ms or more.
class LinuxInputEvents final : public InputEvents {
 public:
  explicit LinuxInputEvents(XDisplay& display) : display_(display) {}

  std::unique_ptr<EventSource> makeSource(const std::string& text) override;
  std::unique_ptr<CreatedEvent> create(EventSource* source, const InputEvent& event) override;
  void post(const CreatedEvent& event) override;
  bool postTo(Pid receiver, const CreatedEvent& event) override;
  std::optional<Point> pointerLocation() override;

 private:
  /// Posts an event, to that receiver or, when there is none, to whoever gets it.
  bool deliver(std::optional<Pid> receiver, const CreatedEvent& event);
  /// What events without a source share as long as one of them exists.
  std::shared_ptr<InputGroup> looseRow();

  XDisplay& display_;
  std::weak_ptr<InputGroup> loose_;
};

}  // namespace tarqo::lnx
