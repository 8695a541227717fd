// Margins inside or outside a rectangle: window decorations, and the shadows that toolkits draw.
#pragma once

#include "platform/geometry.h"

namespace tarqo::lnx::x11 {

struct Insets {
  double left = 0;
  double right = 0;
  double top = 0;
  double bottom = 0;

  bool operator==(const Insets&) const = default;
};

/// The rectangle without a margin that lies inside it.
[[nodiscard]] inline Rect shrunk(const Rect& rect, const Insets& by) {
  return {rect.x + by.left, rect.y + by.top, rect.width - by.left - by.right,
          rect.height - by.top - by.bottom};
}

/// The rectangle with a margin added around it.
[[nodiscard]] inline Rect grown(const Rect& rect, const Insets& by) {
  return {rect.x - by.left, rect.y - by.top, rect.width + by.left + by.right,
          rect.height + by.top + by.bottom};
}

}  // namespace tarqo::lnx::x11
