#include "tests/platform/mac/standin/quartz.h"

#include <algorithm>
#include <utility>

#include "tests/platform/mac/standin/desktop.h"
#include "tests/platform/mac/standin/desktop_quartz.h"
#include "tests/platform/mac/standin/faults.h"

namespace standin {
namespace {

class EventSource final : public Object {
 public:
  explicit EventSource(CGEventSourceStateID state) : state_(state) {}
  [[nodiscard]] CFTypeID type() const override { return typeNamed("CGEventSource"); }
  [[nodiscard]] std::string description() const override {
    return "state " + std::to_string(state_);
  }

 private:
  CGEventSourceStateID state_;
};

class Event final : public Object {
 public:
  explicit Event(EventFields its) : fields(std::move(its)) {}
  [[nodiscard]] CFTypeID type() const override { return typeNamed("CGEvent"); }
  [[nodiscard]] std::string description() const override { return "an event"; }
  EventFields fields;
};

class DisplayMode final : public Object {
 public:
  DisplayMode(std::size_t width, std::size_t widthPx) : width_(width), widthPx_(widthPx) {}
  [[nodiscard]] CFTypeID type() const override { return typeNamed("CGDisplayMode"); }
  [[nodiscard]] std::string description() const override { return "a display mode"; }
  [[nodiscard]] std::size_t width() const { return width_; }
  [[nodiscard]] std::size_t widthPx() const { return widthPx_; }

 private:
  std::size_t width_;
  std::size_t widthPx_;
};

CGEventRef make(CGEventSourceRef source, EventFields fields) {
  Quartz& quartz = Quartz::instance();
  if (quartz.eventsLeft && (*quartz.eventsLeft)-- <= 0) {
    return nullptr;
  }
  fields.flags = quartz.heldModifiers;
  fields.source = source == nullptr ? "none" : describe(source);
  return toRef<CGEventRef>(Heap::instance().make<Event>(std::move(fields)));
}

EventFields& fieldsOf(CGEventRef event, std::string_view user) {
  return as<Event>(event, user).fields;
}

std::vector<Display> displays() {
  return hasDesktop() ? desktopDisplays() : Quartz::instance().displays;
}

std::optional<Display> displayOf(CGDirectDisplayID id) {
  const std::vector<Display> all = displays();
  const auto found = std::ranges::find(all, id, &Display::id);
  return found == all.end() ? std::nullopt : std::optional(*found);
}

std::optional<double> entryOf(CFDictionaryRef dictionary, const char* key) {
  CFTypeRef value = CFDictionaryGetValue(dictionary, text(key).get());
  double number = 0;
  if (value == nullptr || CFGetTypeID(value) != CFNumberGetTypeID()) {
    return std::nullopt;
  }
  CFNumberGetValue(static_cast<CFNumberRef>(value), kCFNumberDoubleType, &number);
  return number;
}

CFTypeRef copy(const Owned& object) { return object ? CFRetain(object.get()) : nullptr; }

}  // namespace

Quartz& Quartz::instance() {
  static Quartz quartz;
  return quartz;
}

void Quartz::reset() { *this = Quartz(); }

}  // namespace standin

using namespace standin;

extern "C" {

const CFStringRef kCGWindowNumber = CFSTR("kCGWindowNumber");
const CFStringRef kCGWindowOwnerPID = CFSTR("kCGWindowOwnerPID");
const CFStringRef kCGWindowOwnerName = CFSTR("kCGWindowOwnerName");
const CFStringRef kCGWindowBounds = CFSTR("kCGWindowBounds");
const CFStringRef kCGWindowLayer = CFSTR("kCGWindowLayer");
const CFStringRef kCGWindowAlpha = CFSTR("kCGWindowAlpha");
const CFStringRef kCGWindowName = CFSTR("kCGWindowName");

CFArrayRef CGWindowListCopyWindowInfo(CGWindowListOption option, CGWindowID relativeToWindow) {
  if (Faults::instance().next("CGWindowListCopyWindowInfo").fails()) {
    return nullptr;
  }
  Quartz& quartz = Quartz::instance();
  quartz.windowOptions = option;
  quartz.relativeTo = relativeToWindow;
  if (hasDesktop()) {
    return static_cast<CFArrayRef>(copy(desktopWindows(option)));
  }
  return static_cast<CFArrayRef>(copy(quartz.windows));
}

bool CGRectMakeWithDictionaryRepresentation(CFDictionaryRef dictionary, CGRect* rect) {
  const auto x = entryOf(dictionary, "X");
  const auto y = entryOf(dictionary, "Y");
  const auto width = entryOf(dictionary, "Width");
  const auto height = entryOf(dictionary, "Height");
  if (!x || !y || !width || !height) {
    return false;
  }
  *rect = {{*x, *y}, {*width, *height}};
  return true;
}

CFDictionaryRef CGSessionCopyCurrentDictionary(void) {
  if (Faults::instance().next("CGSessionCopyCurrentDictionary").fails()) {
    return nullptr;
  }
  return static_cast<CFDictionaryRef>(
      copy(hasDesktop() ? desktopSession() : Quartz::instance().session));
}

CGDirectDisplayID CGMainDisplayID(void) {
  if (hasDesktop()) {
    const std::vector<Display> displays = desktopDisplays();
    return displays.empty() ? 0 : displays.front().id;
  }
  return Quartz::instance().mainDisplay;
}
CGError CGGetActiveDisplayList(uint32_t maxDisplays, CGDirectDisplayID* displays,
                               uint32_t* displayCount) {
  if (Faults::instance().next("CGGetActiveDisplayList").fails()) {
    return CGError{1000};
  }
  const Quartz& quartz = Quartz::instance();
  const std::vector<Display> shown = standin::displays();
  const std::size_t all =
      displays == nullptr ? shown.size() : quartz.displaysLeft.value_or(shown.size());
  const std::size_t count = displays == nullptr ? all : std::min<std::size_t>(all, maxDisplays);
  for (std::size_t i = 0; displays != nullptr && i < count; ++i) {
    displays[i] = shown[i].id;
  }
  *displayCount = static_cast<uint32_t>(count);
  return quartz.displayError;
}
CGRect CGDisplayBounds(CGDirectDisplayID display) {
  const std::optional<Display> its = displayOf(display);
  return !its ? CGRect{} : its->bounds;
}
CGDisplayModeRef CGDisplayCopyDisplayMode(CGDirectDisplayID display) {
  if (Faults::instance().next("CGDisplayCopyDisplayMode").fails()) {
    return nullptr;
  }
  const std::optional<Display> its = displayOf(display);
  if (!its || its->widthPx == 0) {
    return nullptr;
  }
  return toRef<CGDisplayModeRef>(Heap::instance().make<DisplayMode>(
      static_cast<std::size_t>(its->bounds.size.width), its->widthPx));
}
size_t CGDisplayModeGetWidth(CGDisplayModeRef mode) {
  return as<DisplayMode>(mode, "CGDisplayModeGetWidth").width();
}
size_t CGDisplayModeGetPixelWidth(CGDisplayModeRef mode) {
  return as<DisplayMode>(mode, "CGDisplayModeGetPixelWidth").widthPx();
}

CGEventSourceRef CGEventSourceCreate(CGEventSourceStateID state) {
  if (Faults::instance().next("CGEventSourceCreate").fails()) {
    return nullptr;
  }
  return Quartz::instance().refusesSources
             ? nullptr
             : toRef<CGEventSourceRef>(Heap::instance().make<standin::EventSource>(state));
}

CGEventRef CGEventCreate(CGEventSourceRef source) {
  if (Faults::instance().next("CGEventCreate").fails()) {
    return nullptr;
  }
  EventFields fields;
  fields.at = hasDesktop() ? desktopPointer() : Quartz::instance().pointer;
  return make(source, std::move(fields));
}
CGPoint CGEventGetLocation(CGEventRef event) {
  return fieldsOf(event, "CGEventGetLocation").at.value();
}

CGEventRef CGEventCreateMouseEvent(CGEventSourceRef source, CGEventType type, CGPoint position,
                                   CGMouseButton button) {
  if (Faults::instance().next("CGEventCreateMouseEvent").fails()) {
    return nullptr;
  }
  EventFields fields;
  fields.type = type;
  fields.at = position;
  fields.button = button;
  return make(source, std::move(fields));
}

CGEventRef CGEventCreateKeyboardEvent(CGEventSourceRef source, CGKeyCode virtualKey, bool keyDown) {
  if (Faults::instance().next("CGEventCreateKeyboardEvent").fails()) {
    return nullptr;
  }
  EventFields fields;
  fields.type = keyDown ? kCGEventKeyDown : kCGEventKeyUp;
  fields.key = virtualKey;
  fields.down = keyDown;
  return make(source, std::move(fields));
}

void CGEventKeyboardSetUnicodeString(CGEventRef event, UniCharCount length, const UniChar* text) {
  constexpr UniCharCount kTaken = 20;
  const auto* units = reinterpret_cast<const char16_t*>(text);
  fieldsOf(event, "CGEventKeyboardSetUnicodeString")
      .text.assign(units, units + std::min(length, kTaken));
}
void CGEventSetFlags(CGEventRef event, CGEventFlags flags) {
  fieldsOf(event, "CGEventSetFlags").flags = flags;
}
void CGEventSetIntegerValueField(CGEventRef event, CGEventField field, int64_t value) {
  fieldsOf(event, "CGEventSetIntegerValueField").integers[static_cast<int>(field)] = value;
}

CGEventRef CGEventCreateScrollWheelEvent2(CGEventSourceRef source, CGScrollEventUnit units,
                                          uint32_t wheelCount, int32_t wheel1, int32_t wheel2,
                                          int32_t wheel3) {
  if (Faults::instance().next("CGEventCreateScrollWheelEvent2").fails()) {
    return nullptr;
  }
  EventFields fields;
  fields.type = kCGEventScrollWheel;
  fields.unit = units;
  const std::int32_t all[] = {wheel1, wheel2, wheel3};
  fields.wheels.emplace(all, all + wheelCount);
  return make(source, std::move(fields));
}

void CGEventPost(CGEventTapLocation tap, CGEventRef event) {
  const EventFields& fields = fieldsOf(event, "CGEventPost");
  if (hasDesktop()) {
    postOnDesktop(fields);
    return;
  }
  Quartz::instance().posted.push_back({tap, fields});
}

}  // extern "C"
