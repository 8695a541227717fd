// The proofs that stand between a node id and an event.
//
// Each reads live what it proves and fails when it cannot be proven; none acts. Points are in
// screen points. Worker thread; a few dozen round trips to the target at most.
#pragma once

#include <functional>
#include <span>

#include "platform/accessibility.h"
#include "session/node_table.h"
#include "session/session.h"

namespace tarqo {

/// Proves anew, when called, that an event may go out; fails when it may not.
using Proof = std::function<void()>;

/// That the element is still what was observed, and may be clicked. Throws "stale_snapshot",
/// "not_clickable".
void verifyIdentity(Session& session, const StoredNode& stored);

/// That the element is still what was observed, and may be typed into or scrolled. Throws
/// "stale_target".
void requireInputTarget(Session& session, const StoredNode& stored);

/// That a point lies inside the target's window and no other application's window covers it. Throws
/// "app_closed", "not_visible", "target_covered".
void verifyInsideApp(Session& session, Point point);
/// The same of several points at one moment.
void verifyInsideApp(Session& session, std::span<const Point> points);

/// `verifyInsideApp`, and that the element under the point stands for `target`. Throws
/// "hit_test_failed" too.
void verifyPointer(Session& session, Point point, const Element& target);

/// `verifyIdentity`, and that the node lies under `point`.
void verifyNodeAt(Session& session, Point point, const StoredNode& stored);

/// `verifyIdentity` before and after the target is brought to the front, since what comes there may
/// change by it. Throws and waits like `Target::activate` too.
void verifyAndActivate(Session& session, const StoredNode& stored);

/// The element's frame, at least 1 point wide and high. Throws "not_visible".
[[nodiscard]] Rect requireVisibleFrame(Session& session, const Element& element);

}  // namespace tarqo
