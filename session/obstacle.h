// Which window of another application stands in the way of the target, and how a refusal names it.
//
// Worker thread only; reads the window list once a call and waits for nothing.
#pragma once

#include <optional>

#include "base/failure.h"
#include "platform/platform.h"

namespace tarqo {

/// The uppermost window at a point, of whatever layer, when it is another process's; null when it
/// is the target's own or there is none.
[[nodiscard]] std::optional<WindowInfo> foreignWindowAt(const Platform& platform, Pid target,
                                                        Point point);

/// The uppermost window of the application that is in front; null when that is the target.
[[nodiscard]] std::optional<WindowInfo> windowInFront(const Platform& platform, Pid target);

/// The failure, with a sentence that names the window and a detail "inTheWay" with its application
/// and title, as far as they are known; the failure alone without an obstacle, and on systems that
/// name none.
[[nodiscard]] Failure naming(Failure failure, const std::optional<WindowInfo>& obstacle);

}  // namespace tarqo
