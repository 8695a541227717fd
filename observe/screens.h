// Displays in the coordinates of everything else.
#pragma once

#include "platform/window_server.h"

namespace tarqo {

/// A display's frame with its origin at the top left of `reference`, the main display.
[[nodiscard]] inline Rect topLeftFrame(const Screen& screen, const Screen& reference) {
  return {screen.frame.minX(), reference.frame.maxY() - screen.frame.maxY(), screen.frame.extentX(),
          screen.frame.extentY()};
}

}  // namespace tarqo
