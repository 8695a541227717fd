// Pointer events by the XTEST extension, which enter the X server where a device's own would.
#pragma once

#include "platform/input_events.h"
#include "platform/linux/linux_x_display.h"

namespace tarqo::lnx {

/// Only pointer events can be made; the creation of any other gives null. The click state needs no
/// saying: X11 programs count the clicks of a row themselves, by time and place.
class LinuxInputEvents final : public InputEvents {
 public:
  explicit LinuxInputEvents(XDisplay& display) : display_(display) {}

  std::unique_ptr<EventSource> makeSource(const std::string& text) override;
  std::unique_ptr<CreatedEvent> create(EventSource* source, const InputEvent& event) override;
  void post(const CreatedEvent& event) override;
  std::optional<Point> pointerLocation() override;

 private:
  XDisplay& display_;
};

}  // namespace tarqo::lnx
