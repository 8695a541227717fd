// The main run loop.
#pragma once

#include "platform/main_loop.h"

namespace tarqo::mac {

/// Delivers notifications of applications and what is handed to the main queue, and keeps AppKit's
/// knowledge of running applications up to date.
class MacMainLoop final : public MainLoop {
 public:
  [[noreturn]] void run() override;
};

}  // namespace tarqo::mac
