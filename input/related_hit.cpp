#include "input/related_hit.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "ax/attribute_access.h"

namespace tarqo {
namespace {

constexpr int kMaxLineage = 12;  // The element itself and 11 ancestors.
constexpr double kSamePlaceTolerance = 0.5;
constexpr double kContainmentSlack = 0.5;
constexpr double kMinHitSide = 1;
constexpr double kMinOverlap = 0.5;

// Roles of areas that toolkits report in place of what they contain.
constexpr std::array<std::string_view, 3> kRegionRoles{"AXCell", "AXRow", "AXGroup"};

std::string roleOf(Accessibility& ax, const Element& element) {
  return text(attribute(ax, element, "AXRole"));
}

bool isWindowOrApplication(std::string_view role) {
  return role == "AXWindow" || role == "AXApplication";
}

bool descendant(Accessibility& ax, const Element& node, const Element& ancestor) {
  std::optional<Element> current = node;
  for (int round = 0; round < kMaxLineage && current; ++round) {
    if (*current == ancestor) {
      return true;
    }
    if (isWindowOrApplication(roleOf(ax, *current))) {
      return false;
    }
    current = elementValue(attribute(ax, *current, "AXParent"));
  }
  return false;
}

bool samePlace(const Rect& a, const Rect& b) {
  const auto close = [](double x, double y) { return std::abs(x - y) < kSamePlaceTolerance; };
  return close(a.minX(), b.minX()) && close(a.minY(), b.minY()) &&
         close(a.extentX(), b.extentX()) && close(a.extentY(), b.extentY());
}

// Of frames that have a size, as those of elements do.
double overlap(const Rect& a, const Rect& b) {
  const double shared = a.intersection(b).area();
  return shared / (a.area() + b.area() - shared);
}

}  // namespace

bool relatedHit(Accessibility& ax, const Element& hit, const Element& target) {
  const std::string hitRole = roleOf(ax, hit);
  if (descendant(ax, hit, target)) {
    return true;
  }
  if (!isWindowOrApplication(hitRole) && descendant(ax, target, hit)) {
    return true;
  }
  const auto hitFrame = frame(ax, hit);
  const auto targetFrame = frame(ax, target);
  if (!hitFrame || !targetFrame || hitFrame->width < kMinHitSide ||
      hitFrame->height < kMinHitSide) {
    return false;
  }
  const bool sameRole = roleOf(ax, target) == hitRole;
  if (sameRole && samePlace(*hitFrame, *targetFrame)) {
    return true;
  }
  if (std::find(kRegionRoles.begin(), kRegionRoles.end(), hitRole) == kRegionRoles.end()) {
    return false;
  }
  return hitFrame->grownBy(kContainmentSlack).contains(*targetFrame) ||
         targetFrame->grownBy(kContainmentSlack).contains(*hitFrame) ||
         (sameRole && overlap(*hitFrame, *targetFrame) >= kMinOverlap);
}

}  // namespace tarqo
