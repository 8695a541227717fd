// The application that the helper itself is part of.
#pragma once

#include <optional>
#include <string>

#include "platform/platform.h"

namespace tarqo {

/// Worker thread only. Waits for nothing; nothing here fails.
class OwnApplication {
 public:
  explicit OwnApplication(const Platform& platform) : platform_(platform) {}

  /// Whether a process runs from the bundle that holds the helper. False for a helper that lies in
  /// no bundle.
  [[nodiscard]] bool owns(Pid pid);

 private:
  const std::optional<std::string>& bundle();

  const Platform& platform_;
  /// Null until first asked for; then the bundle that holds the helper, or null within.
  std::optional<std::optional<std::string>> bundle_;
};

}  // namespace tarqo
