// The applications that a client can connect to.
#pragma once

#include "base/json.h"
#include "platform/platform.h"

namespace tarqo {

/// {"targets": [{"name", "bundleId", "running", "kind"}]}: the bundles directly inside the
/// application folders and the running regular applications, one entry a bundle identifier, sorted
/// by name for display. Never fails; needs no grant. Worker thread; reads the file system.
[[nodiscard]] Json listTargets(const Platform& platform);

}  // namespace tarqo
