#include "tests/platform/mac/standin/desktop_quartz.h"

#include <optional>
#include <string>
#include <utility>

#include "platform/mac/mac_cf_text.h"
#include "tests/platform/mac/standin/desktop.h"

namespace standin {
namespace {

using Entries = std::vector<std::pair<std::string, Owned>>;

template <typename T, typename Make>
void add(Entries& entries, const char* key, const std::optional<T>& value, const Make& make) {
  if (value) {
    entries.emplace_back(key, make(*value));
  }
}

Owned boundsOf(const tarqo::Rect& rect) {
  return dictionary({{"X", number(rect.x)},
                     {"Y", number(rect.y)},
                     {"Width", number(rect.width)},
                     {"Height", number(rect.height)}});
}

Owned windowOf(const tarqo::WindowInfo& window) {
  Entries entries;
  add(entries, "kCGWindowNumber", window.number, [](auto its) { return integer(its); });
  add(entries, "kCGWindowOwnerPID", window.ownerPid, [](auto its) { return integer(its); });
  add(entries, "kCGWindowOwnerName", window.ownerName, [](const auto& its) { return text(its); });
  add(entries, "kCGWindowBounds", window.bounds, boundsOf);
  add(entries, "kCGWindowLayer", window.layer, [](auto its) { return integer(its); });
  add(entries, "kCGWindowAlpha", window.alpha, [](auto its) { return number(its); });
  add(entries, "kCGWindowName", window.title, [](const auto& its) { return text(its); });
  return dictionary(entries);
}

std::string utf8Of(const std::u16string& units) {
  const Owned object = text16(units);
  return tarqo::mac::textOf(static_cast<CFStringRef>(object.get()));
}

std::optional<tarqo::MouseEventType> mouseTypeOf(CGEventType type) {
  using tarqo::MouseEventType;
  switch (type) {
    case kCGEventLeftMouseDown:
      return MouseEventType::leftDown;
    case kCGEventLeftMouseUp:
      return MouseEventType::leftUp;
    case kCGEventRightMouseDown:
      return MouseEventType::rightDown;
    case kCGEventRightMouseUp:
      return MouseEventType::rightUp;
    case kCGEventMouseMoved:
      return MouseEventType::moved;
    case kCGEventLeftMouseDragged:
      return MouseEventType::leftDragged;
    default:
      return std::nullopt;
  }
}

tarqo::InputEvent eventOf(const EventFields& fields) {
  if (const auto type = mouseTypeOf(fields.type)) {
    const auto clicks = fields.integers.find(kCGMouseEventClickState);
    const int state = clicks == fields.integers.end() ? 0 : static_cast<int>(clicks->second);
    return tarqo::MouseEvent{*type, {fields.at->x, fields.at->y}, state};
  }
  if (fields.type == kCGEventScrollWheel) {
    return tarqo::ScrollEvent{fields.wheels->front()};
  }
  if (!fields.text.empty()) {
    return tarqo::TextEvent{utf8Of(fields.text), *fields.down};
  }
  return tarqo::KeyEvent{*fields.key, *fields.down, fields.flags};
}

}  // namespace

Owned desktopWindows(CGWindowListOption option) {
  const bool aboveDesktop = (option & kCGWindowListExcludeDesktopElements) != 0;
  const auto windows = onDesktop([&](const tarqo::Platform& platform) {
    return platform.windowServer.windows(aboveDesktop ? tarqo::WindowList::onScreenAboveDesktop
                                                      : tarqo::WindowList::onScreen);
  });
  std::vector<Owned> list;
  for (const tarqo::WindowInfo& window : windows) {
    list.push_back(windowOf(window));
  }
  return array(list);
}

Owned desktopSession() {
  const auto session = onDesktop(
      [](const tarqo::Platform& platform) { return platform.windowServer.loginSession(); });
  Entries entries;
  // The key is there only while the screen is locked.
  if (session.locked == true) {
    entries.emplace_back("CGSSessionScreenIsLocked", integer(1));
  }
  add(entries, "kCGSSessionOnConsoleKey", session.onConsole, boolean);
  return dictionary(entries);
}

std::vector<Display> desktopDisplays() {
  const auto screens =
      onDesktop([](const tarqo::Platform& platform) { return platform.windowServer.screens(); });
  std::vector<Display> displays;
  for (const tarqo::Screen& screen : screens) {
    const double bottom = screens.front().frame.height;
    const tarqo::Rect& frame = screen.frame;
    displays.push_back({screen.displayNumber,
                        {{frame.x, bottom - (frame.y + frame.height)}, {frame.width, frame.height}},
                        static_cast<std::size_t>(frame.width * screen.scale)});
  }
  return displays;
}

CGPoint desktopPointer() {
  const auto at = onDesktop(
      [](const tarqo::Platform& platform) { return platform.inputEvents.pointerLocation(); });
  return at ? CGPoint{at->x, at->y} : CGPoint{};
}

void postOnDesktop(const EventFields& fields) {
  const tarqo::InputEvent event = eventOf(fields);
  onDesktop([&](const tarqo::Platform& platform) {
    const auto* typed = std::get_if<tarqo::TextEvent>(&event);
    const auto source = platform.inputEvents.makeSource(typed == nullptr ? "" : typed->text);
    if (const auto created = platform.inputEvents.create(source.get(), event)) {
      platform.inputEvents.post(*created);
    }
  });
}

}  // namespace standin
