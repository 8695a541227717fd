#include "platform/linux/atspi/wheel_steps.h"

#include <cmath>

#include "platform/linux/atspi/translate/visibility.h"

namespace tarqo::lnx::atspi {
namespace {

/// The deepest tree that what scrolls is looked for in.
constexpr int kMaxAncestors = 40;

// As measured, in points. Qt turns by three steps, of 20 points where no widget says otherwise; a
// list or an editor by three lines, which is about as much. Firefox turns a page by six of its
// lines and what scrolls inside it by three.
constexpr Size kQt{60, 60};
constexpr Size kChromium{120, 120};
constexpr Size kGecko{20, 114};

// LibreOffice, which is GTK 3 to look at, turns its sheets by three rows.
constexpr Size kSheet{51, 51};

}  // namespace

double gtkWheelStep(double length) { return std::pow(length, 2.0 / 3.0); }

std::optional<Size> WheelSteps::of(const ObjectHandle& object) {
  switch (reader_.toolkitOf(object)) {
    case Toolkit::chromium:
      return kChromium;
    case Toolkit::gecko:
      return kGecko;
    case Toolkit::qt:
      return kQt;
    case Toolkit::gtk3:
    case Toolkit::gtk4:
      return gtkStep(object);
    case Toolkit::other:
      break;
  }
  return std::nullopt;
}

std::optional<Size> WheelSteps::gtkStep(const ObjectHandle& object) {
  ObjectHandle at = object;
  const Instant end = reader_.clock().now() + object.timeout;
  for (int depth = 0; depth < kMaxAncestors && reader_.clock().now() < end; ++depth) {
    const PropertiesPtr properties =
        reader_.read(at, Property::basics | Property::extents | Property::parent);
    if (properties && properties->is(Role::documentSpreadsheet)) {
      return kSheet;
    }
    if (properties && properties->is(Role::scrollPane)) {
      const std::optional<Rect> area = plausible(properties->extents);
      return area ? std::optional(Size{gtkWheelStep(area->width), gtkWheelStep(area->height)})
                  : std::nullopt;
    }
    if (!properties || !properties->parent || properties->parent->empty() ||
        properties->parent->path == kRootPath) {
      break;
    }
    at.ref = *properties->parent;
  }
  return std::nullopt;
}

}  // namespace tarqo::lnx::atspi
