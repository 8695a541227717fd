// The workspace: which applications run, which is in front, and how one is brought there.
//
// Worker thread only. Answers come from the system's own records, not from the applications, so a
// hung application does not delay them; the deeds only ask, and return before they are done.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/accessibility.h"

namespace tarqo {

/// Tells a process from a later one that was given the same process id.
struct ApplicationId {
  Pid pid = 0;
  std::uint64_t instance = 0;

  bool operator==(const ApplicationId&) const = default;
};

enum class ActivationPolicy {
  regular,    ///< An ordinary application with windows that a user switches to.
  accessory,  ///< Shows windows but is not switched to.
  prohibited  ///< Runs in the background only.
};

struct RunningApplication {
  ApplicationId id;
  std::optional<std::string> bundleId;       ///< Null when the process belongs to no bundle.
  std::optional<std::string> bundlePath;     ///< Absolute; null as above.
  std::optional<std::string> localizedName;  ///< The name the user sees.
  ActivationPolicy policy = ActivationPolicy::regular;
};

class Workspace {
 public:
  virtual ~Workspace() = default;

  /// Every running application, in the system's order.
  [[nodiscard]] virtual std::vector<RunningApplication> runningApplications() = 0;

  /// The running applications of one bundle identifier, in the system's order.
  [[nodiscard]] virtual std::vector<RunningApplication> runningApplications(
      std::string_view bundleId) = 0;

  /// The running application with that process id; null when the process is no application.
  [[nodiscard]] virtual std::optional<RunningApplication> runningApplication(Pid pid) = 0;

  [[nodiscard]] virtual bool isTerminated(const ApplicationId& application) = 0;

  /// Whether the application as a whole is hidden, that is, none of its windows is shown.
  [[nodiscard]] virtual bool isHidden(const ApplicationId& application) = 0;

  virtual void unhide(const ApplicationId& application) = 0;

  /// Asks for the application to be brought to the front.
  virtual void activate(const ApplicationId& application) = 0;

  /// The application that receives keystrokes now.
  [[nodiscard]] virtual std::optional<Pid> frontmostApplication() = 0;
};

}  // namespace tarqo
