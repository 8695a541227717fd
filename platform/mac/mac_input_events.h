// Input events made by Quartz and posted where those of devices enter.
#pragma once

#include <functional>

#include "platform/input_events.h"

namespace tarqo::mac {

/// Without the accessibility grant the system drops what is posted and says nothing.
class MacInputEvents final : public InputEvents {
 public:
  /// `frontmost` tells the application that keystrokes go to.
  explicit MacInputEvents(std::function<std::optional<Pid>()> frontmost)
      : frontmost_(std::move(frontmost)) {}

  std::unique_ptr<EventSource> makeSource(const std::string& text) override;

  /// No event presses a modifier that the user holds, not even a click.
  ///
  /// A key carries at most 20 UTF-16 units, so a longer cluster becomes several keys: all but the
  /// last go down and up with the event that goes down.
  std::unique_ptr<CreatedEvent> create(EventSource* source, const InputEvent& event) override;

  void post(const CreatedEvent& event) override;

  /// Keys go to the application in front, which is asked for right before. Whom the pointer's
  /// events reach the window list alone tells, which the caller has just read: nothing holds the
  /// windows still until the event arrives.
  bool postTo(Pid receiver, const CreatedEvent& event) override;

  std::optional<Point> pointerLocation() override;

 private:
  std::function<std::optional<Pid>()> frontmost_;
};

}  // namespace tarqo::mac
