// Input events made by Quartz and posted where those of devices enter.
#pragma once

#include "platform/input_events.h"

namespace tarqo::mac {

/// Without the accessibility grant the system drops what is posted and says nothing.
class MacInputEvents final : public InputEvents {
 public:
  std::unique_ptr<EventSource> makeSource(const std::string& text) override;

  /// No event presses a modifier that the user holds, not even a click.
  ///
  /// A key carries at most 20 UTF-16 units, so a longer cluster becomes several keys: all but the
  /// last go down and up with the event that goes down.
  std::unique_ptr<CreatedEvent> create(EventSource* source, const InputEvent& event) override;

  void post(const CreatedEvent& event) override;

  std::optional<Point> pointerLocation() override;
};

}  // namespace tarqo::mac
