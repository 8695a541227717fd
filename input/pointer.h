// The pointer's way to an element, and what its buttons do there.
//
// Events go out at the pace of a hand. Worker thread; each call waits as long as its gesture lasts,
// half a second to a second. Throws "target_covered" when another process would get what acts, and
// what `proof` throws.
#pragma once

#include "input/proofs.h"
#include "session/session.h"

namespace tarqo {

/// Approaches `point` in small steps and rests there for `rest`.
void glide(Session& session, Point point, EventSource* source, Duration rest);

/// Approaches and clicks `count` times, each press after `proof`. Returns how many clicks were
/// made: fewer than `count`, but one at least, when the first changed what the proof is about.
int press(Session& session, Point point, int count, const Proof& proof);

/// Clicks once with the right button.
void rightPress(Session& session, Point point, const Proof& proof);

}  // namespace tarqo
