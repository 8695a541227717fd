// Points, sizes and rectangles.
//
// Unless a declaration says otherwise, coordinates are screen points with the origin at the top
// left of the main display and y growing downward.
#pragma once

#include <algorithm>
#include <cmath>

namespace tarqo {

struct Point {
  double x = 0;
  double y = 0;

  bool operator==(const Point&) const = default;
};

struct Size {
  double width = 0;
  double height = 0;

  bool operator==(const Size&) const = default;
};

/// A rectangle. Sizes may be negative as an application reported them; the min/max/extent functions
/// standardise it first, so that a rectangle drawn "backwards" means the same area.
struct Rect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;

  bool operator==(const Rect&) const = default;

  [[nodiscard]] double minX() const { return std::min(x, x + width); }
  [[nodiscard]] double minY() const { return std::min(y, y + height); }
  [[nodiscard]] double maxX() const { return std::max(x, x + width); }
  [[nodiscard]] double maxY() const { return std::max(y, y + height); }
  [[nodiscard]] double extentX() const { return std::abs(width); }
  [[nodiscard]] double extentY() const { return std::abs(height); }
  [[nodiscard]] double area() const { return extentX() * extentY(); }
  [[nodiscard]] Point center() const { return {minX() + extentX() / 2, minY() + extentY() / 2}; }

  /// The rectangle with `margin` added on every side.
  [[nodiscard]] Rect grownBy(double margin) const {
    return {minX() - margin, minY() - margin, extentX() + 2 * margin, extentY() + 2 * margin};
  }

  /// The left and top edges belong to the rectangle, the right and bottom edges do not.
  [[nodiscard]] bool contains(Point p) const {
    return p.x >= minX() && p.x < maxX() && p.y >= minY() && p.y < maxY();
  }

  [[nodiscard]] bool contains(const Rect& other) const {
    return other.minX() >= minX() && other.maxX() <= maxX() && other.minY() >= minY() &&
           other.maxY() <= maxY();
  }

  /// Zero width and height where the two do not meet.
  [[nodiscard]] Rect intersection(const Rect& other) const {
    const double left = std::max(minX(), other.minX());
    const double top = std::max(minY(), other.minY());
    const double right = std::min(maxX(), other.maxX());
    const double bottom = std::min(maxY(), other.maxY());
    if (right <= left || bottom <= top) {
      return {};
    }
    return {left, top, right - left, bottom - top};
  }

  /// True when the two share an area; touching edges do not count.
  [[nodiscard]] bool intersects(const Rect& other) const { return intersection(other).area() > 0; }
};

}  // namespace tarqo
