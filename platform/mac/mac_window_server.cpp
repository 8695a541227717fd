#include "platform/mac/mac_window_server.h"

#include <CoreGraphics/CoreGraphics.h>

#include <algorithm>
#include <limits>
#include <optional>

#include "platform/mac/mac_cf.h"
#include "platform/mac/mac_cf_text.h"
#include "platform/mac/mac_login_session.h"

namespace tarqo::mac {
namespace {

/// A number of the dictionary in the interface's own type; none also when it does not fit there.
template <typename Integer>
std::optional<Integer> integerOf(CFDictionaryRef entry, CFStringRef key) {
  const std::optional<SInt64> number = integerIn(CFDictionaryGetValue(entry, key));
  if (!number || *number < std::numeric_limits<Integer>::min() ||
      *number > std::numeric_limits<Integer>::max()) {
    return std::nullopt;
  }
  return static_cast<Integer>(*number);
}

std::optional<Rect> rectOf(CFDictionaryRef entry, CFStringRef key) {
  const CFDictionaryRef bounds = asDictionary(CFDictionaryGetValue(entry, key));
  CGRect rect{};
  if (bounds == nullptr || !CGRectMakeWithDictionaryRepresentation(bounds, &rect)) {
    return std::nullopt;
  }
  return Rect{rect.origin.x, rect.origin.y, rect.size.width, rect.size.height};
}

WindowInfo windowOf(CFDictionaryRef entry) {
  WindowInfo info;
  info.number = integerOf<WindowNumber>(entry, kCGWindowNumber);
  info.ownerPid = integerOf<Pid>(entry, kCGWindowOwnerPID);
  info.ownerName = textIn(CFDictionaryGetValue(entry, kCGWindowOwnerName));
  info.bounds = rectOf(entry, kCGWindowBounds);
  info.layer = integerOf<int>(entry, kCGWindowLayer);
  info.alpha = numberIn(CFDictionaryGetValue(entry, kCGWindowAlpha));
  info.title = textIn(CFDictionaryGetValue(entry, kCGWindowName));
  return info;
}

CGWindowListOption optionsFor(WindowList which) {
  switch (which) {
    case WindowList::onScreen:
      return kCGWindowListOptionOnScreenOnly;
    case WindowList::onScreenAboveDesktop:
      return kCGWindowListOptionOnScreenOnly | kCGWindowListExcludeDesktopElements;
  }
  return kCGWindowListOptionOnScreenOnly;
}

std::vector<CGDirectDisplayID> activeDisplays() {
  std::uint32_t count = 0;
  if (CGGetActiveDisplayList(0, nullptr, &count) != kCGErrorSuccess) {
    return {};
  }
  std::vector<CGDirectDisplayID> displays(count);
  if (CGGetActiveDisplayList(count, displays.data(), &count) != kCGErrorSuccess) {
    return {};
  }
  // A display may have gone between the two questions.
  displays.resize(std::min<std::size_t>(count, displays.size()));
  const auto main = std::find(displays.begin(), displays.end(), CGMainDisplayID());
  if (main != displays.end()) {
    std::rotate(displays.begin(), main, main + 1);
  }
  return displays;
}

/// Pixels per point; 1 for a display that shows no mode, as one that is being taken away.
double scaleOf(CGDirectDisplayID display) {
  const CfRef<CGDisplayModeRef> mode = adopt(CGDisplayCopyDisplayMode(display));
  const std::size_t points = mode ? CGDisplayModeGetWidth(mode.get()) : 0;
  return points == 0 ? 1
                     : static_cast<double>(CGDisplayModeGetPixelWidth(mode.get())) /
                           static_cast<double>(points);
}

}  // namespace

std::vector<WindowInfo> MacWindowServer::windows(WindowList which) {
  const CfRef<CFArrayRef> list =
      adopt(CGWindowListCopyWindowInfo(optionsFor(which), kCGNullWindowID));
  if (asArray(list.get()) == nullptr) {
    return {};  // No window server: not in a graphical session.
  }
  std::vector<WindowInfo> windows;
  for (CFIndex i = 0; i < CFArrayGetCount(list.get()); ++i) {
    if (const CFDictionaryRef entry = asDictionary(CFArrayGetValueAtIndex(list.get(), i))) {
      windows.push_back(windowOf(entry));
    }
  }
  return windows;
}

std::vector<Screen> MacWindowServer::screens() {
  std::vector<Screen> screens;
  const std::vector<CGDirectDisplayID> displays = activeDisplays();
  for (const CGDirectDisplayID display : displays) {
    // From the top left of the main display, in points; its own bottom edge is the other origin.
    const CGRect bounds = CGDisplayBounds(display);
    const CGRect main = CGDisplayBounds(displays.front());
    const double bottom = main.origin.y + main.size.height;
    const Rect frame{bounds.origin.x, bottom - (bounds.origin.y + bounds.size.height),
                     bounds.size.width, bounds.size.height};
    screens.push_back({display, frame, scaleOf(display)});
  }
  return screens;
}

LoginSession MacWindowServer::loginSession() { return readLoginSession(); }

}  // namespace tarqo::mac
