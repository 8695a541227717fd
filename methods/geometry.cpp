// The "geometry" method: where the target's window is, and whether it shows.

#include "ax/attribute_access.h"
#include "base/failure.h"
#include "methods/methods.h"
#include "observe/placement.h"

namespace tarqo::methods {
namespace {

std::string_view visibility(WindowPlacement::Kind kind) {
  using Kind = WindowPlacement::Kind;
  switch (kind) {
    case Kind::exact:
      return "visible";
    case Kind::covered:
      return "occluded";
    case Kind::missing:
      break;
  }
  return "hidden";
}

}  // namespace

Json geometry(Session& session) {
  Target& target = session.target;
  (void)target.requireApp();
  const auto window = target.primaryWindow();
  const auto bounds = window ? frame(session.platform.accessibility, *window) : std::nullopt;
  if (!bounds) {
    fail(failures::kNoWindow);
  }
  const WindowPlacement placement = windowPlacement(session.platform, target, *bounds);
  return {{"bounds", rectJSON(*bounds)},
          {"visibility", visibility(placement.kind)},
          {"minimized", target.isMinimized(*window)},
          {"hidden", target.isHidden()}};
}

}  // namespace tarqo::methods
