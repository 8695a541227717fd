// The macOS backend, on the stand-in instead of on macOS.
#pragma once

#include <memory>

#include "platform/platform.h"

namespace tarqo {

/// `makePlatform` of the macOS backend, under a name that leaves room for another backend's.
[[nodiscard]] std::unique_ptr<Backend> makeMacPlatform(const char* argv0);

}  // namespace tarqo
