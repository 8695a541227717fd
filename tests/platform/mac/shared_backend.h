// The macOS backend of a test program whose main loop runs on the main thread.
#pragma once

#include "platform/platform.h"

namespace tarqo {

/// One for the whole program.
[[nodiscard]] Backend& sharedBackend();

}  // namespace tarqo
