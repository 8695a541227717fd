// The application that launched the helper, to which the system attributes its grants.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/json.h"
#include "platform/platform.h"

namespace tarqo {

/// What the host is called when it cannot be found.
inline constexpr std::string_view HOST_FALLBACK = "MCP 호스트";

/// The companion application, which counts as host itself though its helpers live in its bundle.
inline constexpr std::string_view OWN_BUNDLE_ID = "com.tarqo.app";

struct ResponsibleHost {
  std::string name;                     ///< Never empty.
  std::optional<std::string> bundleId;  ///< Null when the bundle has none.
  std::optional<Pid> pid;               ///< Where the search stopped.

  [[nodiscard]] Json json() const;
};

/// The outermost folder of `path` whose name ends in ".app"; null when there is no such folder.
[[nodiscard]] std::optional<std::string> outermostBundle(const std::string& path);

/// `name` without a ".app" at its end.
[[nodiscard]] std::string withoutAppSuffix(std::string name);

/// Finds the host by walking up the process tree. Worker thread only; asks the system, waits for
/// nothing; nothing here fails.
class HostFinder {
 public:
  explicit HostFinder(const Platform& platform) : platform_(platform) {}

  /// The host of the helper, searched once and remembered for the life of the process, also when
  /// there is none: then its name is `HOST_FALLBACK` and it has nothing else.
  [[nodiscard]] ResponsibleHost host();

  /// Searches from `start`, or from the helper's parent; null when the walk finds no application.
  [[nodiscard]] std::optional<ResponsibleHost> responsibleHost(std::optional<Pid> start);

 private:
  std::optional<std::string> bundleOf(Pid pid);
  ResponsibleHost bundleIdentity(const std::string& path, Pid pid);
  std::optional<ResponsibleHost> hostAt(Pid pid, const std::optional<std::string>& ownBundle);

  const Platform& platform_;
  std::optional<std::optional<ResponsibleHost>> responsibleHostMemo_;
};

}  // namespace tarqo
