// The window server: which windows are on the screen, on which displays, in whose login session.
//
// Worker thread only. Answers come from the window server, not from the applications, so a hung
// application does not delay them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/accessibility.h"

namespace tarqo {

using WindowNumber = std::uint32_t;

/// One window on the screen. What the server does not report is null.
struct WindowInfo {
  std::optional<WindowNumber> number;
  std::optional<Pid> ownerPid;
  std::optional<std::string> ownerName;
  std::optional<Rect> bounds;   ///< The visible frame with its decorations, without its shadow.
  std::optional<int> layer;     ///< 0 for ordinary windows; menus, panels and docks lie elsewhere.
  std::optional<double> alpha;  ///< 0 is invisible.
  std::optional<std::string> title;
  /// What a refusal calls the window to the user: "the dialog "Save As" of Notes". Null where
  /// refusals name no window.
  std::optional<std::string> caption;
};

/// One display. `frame` is in the desktop's own coordinates: origin at the bottom left of the first
/// display, y growing upward.
struct Screen {
  std::uint32_t displayNumber = 0;
  Rect frame;
  double scale = 1;  ///< Pixels per point.
};

/// The login session; its facts are null where the system does not report them.
struct LoginSession {
  std::optional<bool> locked;
  std::optional<bool> onConsole;
};

enum class WindowList {
  onScreen,             ///< All windows on the screen.
  onScreenAboveDesktop  ///< Those, without the elements of the desktop itself.
};

class WindowServer {
 public:
  virtual ~WindowServer() = default;

  /// The windows on the screen, front to back; empty also when the server does not answer.
  [[nodiscard]] virtual std::vector<WindowInfo> windows(WindowList which) = 0;

  /// The displays, the main one first; empty when there is none or they cannot be read.
  [[nodiscard]] virtual std::vector<Screen> screens() = 0;

  [[nodiscard]] virtual LoginSession loginSession() = 0;
};

}  // namespace tarqo
