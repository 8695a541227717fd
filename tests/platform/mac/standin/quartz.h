// Windows, displays, the login session and posted events, as CoreGraphics shows them.
#pragma once

#include <CoreGraphics/CoreGraphics.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/platform/mac/standin/core_foundation.h"

namespace standin {

struct Display {
  CGDirectDisplayID id = 0;
  CGRect bounds{};
  std::size_t widthPx = 0;  ///< Of its mode; 0 when it shows none.
};

/// An event with every field that was given.
struct EventFields {
  CGEventType type = kCGEventMouseMoved;
  std::optional<CGPoint> at;
  std::optional<CGMouseButton> button;
  std::optional<CGKeyCode> key;
  std::optional<bool> down;
  std::optional<std::vector<std::int32_t>> wheels;
  std::optional<CGScrollEventUnit> unit;
  std::u16string text;  ///< As much of it as the system takes.
  CGEventFlags flags = 0;
  std::map<int, std::int64_t> integers;
  std::string source;  ///< "none", or "state" and the number of the source's.
};

struct Posted {
  CGEventTapLocation tap = kCGSessionEventTap;
  EventFields event;
};

class Quartz {
 public:
  static Quartz& instance();
  void reset();

  Owned windows;  ///< None: no window server.
  CGWindowListOption windowOptions = 0;
  CGWindowID relativeTo = 99;
  Owned session;

  std::vector<Display> displays;
  CGDirectDisplayID mainDisplay = 0;
  CGError displayError = kCGErrorSuccess;
  /// What is left of the displays when the list is asked for a second time.
  std::optional<std::size_t> displaysLeft;

  CGEventFlags heldModifiers = 0;  ///< By the user.
  CGPoint pointer{};
  bool refusesSources = false;
  /// How many more events can be made; none: any number.
  std::optional<int> eventsLeft;
  std::vector<Posted> posted;
};

}  // namespace standin
