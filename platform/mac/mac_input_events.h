// Input events made by Quartz and posted where those of devices enter.
#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/input_events.h"
#include "platform/posix/ending_signals.h"
#include "platform/window_server.h"

namespace tarqo::mac {

/// Without the accessibility grant the system drops what is posted and says nothing.
class MacInputEvents final : public InputEvents {
 public:
  /// `frontmost` tells the application that keystrokes go to, `windows` the windows above the
  /// desktop, front to back.
  MacInputEvents(std::function<std::optional<Pid>()> frontmost,
                 std::function<std::vector<WindowInfo>()> windows)
      : frontmost_(std::move(frontmost)), windows_(std::move(windows)) {}

  std::unique_ptr<EventSource> makeSource(const std::string& text) override;

  /// No event presses a modifier that the user holds, not even a click.
  ///
  /// A key carries at most 20 UTF-16 units, so a longer cluster becomes several keys: all but the
  /// last go down and up with the event that goes down.
  std::unique_ptr<CreatedEvent> create(EventSource* source, const InputEvent& event) override;

  /// While a button or a key is down, signals that ask the process to end wait: nobody else would
  /// let go of it.
  void post(const CreatedEvent& event) override;

  /// Keys go to the application in front, a button and the wheel to the owner of the uppermost
  /// window at the place: both are asked for right before. Windows on other layers (menus, panels,
  /// overlays) count for the receiver alone, since many of those of others let events through. What
  /// follows a button that is down goes where that went. Nothing holds the windows still until the
  /// event arrives.
  bool postTo(Pid receiver, const CreatedEvent& event) override;

  bool scrollsByDragging() override { return true; }

  std::optional<Point> pointerLocation() override;

 private:
  [[nodiscard]] bool reaches(Pid receiver, Point place) const;

  std::function<std::optional<Pid>()> frontmost_;
  /// Notes what the event presses, right before it goes out, or lets go of, right after.
  void notePressed(const InputEvent& event);
  void noteReleased(const InputEvent& event);

  std::function<std::vector<WindowInfo>()> windows_;
  std::set<std::string> down_;  ///< The buttons and keys, by name.
  std::optional<EndingSignals> signals_;
};

}  // namespace tarqo::mac
