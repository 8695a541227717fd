// Scrolling by the wheel, and the two gestures that stand in for it.
#pragma once

#include <cstdint>

#include "input/proofs.h"
#include "session/session.h"

namespace tarqo {

/// Scrolls by `dx` and `dy` points, each at most 2000 either way and not both 0. Sideways is a
/// swipe over the window, up by at most 400 a pull at its middle; all else turns the wheel at
/// `point`, after `wheelProof`. Waits for the target to be in front, up to 1.5 s, and 0.5 s for the
/// gesture.
///
/// Throws "invalid_argument", "target_covered", "not_visible", "input_failed", and what
/// `wheelProof` throws. Worker thread.
void scroll(Session& session, Point point, std::int64_t dx, std::int64_t dy,
            const Proof& wheelProof);

}  // namespace tarqo
