// Scrolling by the wheel, and the two gestures that stand in for it.
#pragma once

#include <cstdint>

#include "input/proofs.h"
#include "session/session.h"

namespace tarqo {

/// Where the wheel turns.
struct WheelPlace {
  Point point;
  Element over;  ///< What lies there, for the system to know how far its wheel moves it.
  Proof proof;   ///< Made before each event.
};

/// Scrolls by `dx` and `dy` points, each at most 2000 either way and not both 0. Where content
/// moves by being dragged, sideways is a swipe over the window, up by at most 400 a pull at its
/// middle; all else turns the wheel at `place`. Elsewhere the wheel does it all, `dy` and then
/// `dx`. Waits for the target to be in front, up to 1.5 s, and 0.5 s for the gesture.
///
/// Throws "invalid_argument", "target_covered", "not_visible", "input_failed", and what
/// `place.proof` throws. Worker thread.
void scroll(Session& session, const WheelPlace& place, std::int64_t dx, std::int64_t dy);

}  // namespace tarqo
