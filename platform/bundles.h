// Installed applications: where they lie, what they are called, and how one is opened.
//
// An application bundle is what the system installs and launches as one thing: a ".app" folder, or
// a desktop entry. Paths are absolute. Worker thread only; reads the file system, waits for
// nothing.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/workspace.h"

namespace tarqo {

struct Bundle {
  std::optional<std::string> identifier;
};

/// What came of opening an application: the application, or an error text, or neither.
struct OpenedApplication {
  std::optional<RunningApplication> application;
  std::optional<std::string> error;
};
using OpenCompletion = std::function<void(OpenedApplication)>;

class Bundles {
 public:
  virtual ~Bundles() = default;

  /// The folders that hold applications, in the order in which later ones overrule earlier ones.
  [[nodiscard]] virtual std::vector<std::string> applicationFolders() = 0;

  /// The names of the bundles inside a folder, relative to it; empty when it cannot be listed.
  /// Those directly inside it, and those below where the system counts these too.
  [[nodiscard]] virtual std::vector<std::string> bundlesIn(const std::string& folder) = 0;

  /// The bundle at a path; null when there is no bundle or it cannot be opened. An entry of the
  /// system that may not be launched by a user counts as no bundle.
  [[nodiscard]] virtual std::optional<Bundle> bundleAt(const std::string& path) = 0;

  /// A text of the bundle's Info dictionary ("CFBundleShortVersionString"); null when absent or not
  /// a text.
  [[nodiscard]] virtual std::optional<std::string> infoText(const std::string& path,
                                                            std::string_view key) = 0;

  /// The name under which the user knows the file or bundle at a path.
  [[nodiscard]] virtual std::string displayName(const std::string& path) = 0;

  /// The bundle that a process belongs to by the system's records; null where the system keeps no
  /// such records and the process's executable path has to tell.
  [[nodiscard]] virtual std::optional<std::string> recordedBundleOf(Pid pid) = 0;

  /// The path with symbolic links resolved, standardised; the path itself when it does not exist.
  [[nodiscard]] virtual std::string resolved(const std::string& path) = 0;

  /// The bundle that the system launches for an identifier.
  [[nodiscard]] virtual std::optional<std::string> pathForIdentifier(std::string_view bundleId) = 0;

  /// Opens the application at a path, or asks the running one to show a window. `activates` says
  /// whether it may come to the front. The completion is called once, on any thread, perhaps after
  /// the caller has stopped waiting, perhaps never. What is launched inherits none of the helper's
  /// standard streams.
  virtual void open(const std::string& path, bool activates, OpenCompletion completion) = 0;

  /// Asks the application to show a site in a new window, in the background. Nothing is reported:
  /// the caller sees the window or does not.
  virtual void openSite(const std::string& bundleId, const std::string& site) = 0;
};

}  // namespace tarqo
