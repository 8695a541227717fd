#include "platform/linux/atspi/translate/visibility.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

namespace tarqo::lnx::atspi {
namespace {

/// No screen reaches further; objects beyond were never laid out.
constexpr double kFarthest = 100'000;

/// Whether such an object has a place when it is on the screen, and may be reported as shown when
/// it has lost it: rows scrolled away (GTK 3), lists of closed boxes (Qt), pages of a stack (GTK
/// 4). Elsewhere what has no place may hold what has one: the page of a tab whose tab is not drawn
/// (GTK 3), the visible content of an empty box (web pages).
bool losesPlaceWhenHidden(const Properties& properties, Toolkit toolkit) {
  return toolkit == Toolkit::gtk4 || toolkit == Toolkit::qt ||
         (toolkit == Toolkit::gtk3 && isCellRole(properties.role)) ||
         properties.is(Role::staticText);
}

/// Whether enough of an object shows in an area for it to be found there: its centre is inside; for
/// containers any overlap is enough; a larger object must cover half the area.
bool showsIn(const Rect& area, const Rect& extents, std::string_view axRole) {
  constexpr std::array<std::string_view, 5> kContainers{"AXGroup", "AXList", "AXTable", "AXOutline",
                                                        "AXScrollArea"};
  const bool isContainer = std::ranges::find(kContainers, axRole) != kContainers.end();
  const double shown = area.intersection(extents).area();
  return area.contains(extents.center()) || (isContainer && shown > 0) || shown >= area.area() / 2;
}

}  // namespace

bool isShowing(const Properties& properties, Toolkit toolkit) {
  // GTK 4 reports "showing" for windows only.
  if (toolkit == Toolkit::gtk4) {
    return properties.has(State::visible) || properties.has(State::showing);
  }
  return properties.has(State::showing);
}

std::optional<Rect> plausible(const std::optional<Rect>& extents) {
  if (!extents || extents->width <= 0 || extents->height <= 0 ||
      std::max({std::abs(extents->x), std::abs(extents->y), extents->width, extents->height}) >
          kFarthest) {
    return std::nullopt;
  }
  return extents;
}

bool mayBeScrolledAway(const View& view) {
  return view.toolkit == Toolkit::gtk4 ||
         (view.toolkit == Toolkit::qt && isCellRole(view.properties.role));
}

bool isHidden(const View& view) {
  if (view.inMenuBar) {
    return false;
  }
  if (!isShowing(view.properties, view.toolkit)) {
    return true;
  }
  if (view.properties.drawn == false) {
    return true;
  }
  if (!view.properties.extents || !losesPlaceWhenHidden(view.properties, view.toolkit)) {
    return false;
  }
  const std::optional<Rect> extents = plausible(view.properties.extents);
  return !extents || (view.clip && mayBeScrolledAway(view) &&
                      !showsIn(*view.clip, *extents, roleRow(view.properties.role).axRole));
}

std::optional<Rect> clipBelow(const std::optional<Rect>& clip, const Properties& properties,
                              Toolkit toolkit) {
  const std::optional<Rect> extents = plausible(properties.extents);
  if (toolkit != Toolkit::gtk4 || !extents || !properties.is(Role::scrollPane)) {
    return clip;
  }
  return clip ? clip->intersection(*extents) : extents;
}

bool hasFocus(const Properties& properties, Toolkit toolkit) {
  // The links that GTK 3 makes of a label's words have no place, and all claim the focus; so does
  // the front tab in Qt 5, wherever the focus is.
  const bool falseClaim = !properties.has(Interface::component) ||
                          (toolkit == Toolkit::qt && properties.is(Role::pageTab));
  return properties.has(State::focused) && !falseClaim;
}

}  // namespace tarqo::lnx::atspi
