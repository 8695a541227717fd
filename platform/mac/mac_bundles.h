// Installed applications: bundles whose names end in ".app".
#pragma once

#include "platform/bundles.h"

namespace tarqo::mac {

class MacBundles final : public Bundles {
 public:
  std::vector<std::string> applicationFolders() override;
  std::vector<std::string> bundlesIn(const std::string& folder) override;
  std::optional<Bundle> bundleAt(const std::string& path) override;

  /// Foundation remembers a bundle it has read, so an update shows only after a restart.
  std::optional<std::string> infoText(const std::string& path, std::string_view key) override;
  std::string displayName(const std::string& path) override;

  /// None: the path of a process's program tells its bundle.
  std::optional<std::string> recordedBundleOf(Pid pid) override;
  std::string resolved(const std::string& path) override;
  std::optional<std::string> pathForIdentifier(std::string_view bundleId) override;

  /// Launch Services starts the application, so that it is no child of the helper.
  void open(const std::string& path, bool activates, OpenCompletion completion) override;

  /// By "/usr/bin/open -n": only a new instance is given arguments, and it hands them to the one
  /// that runs.
  void openSite(const std::string& bundleId, const std::string& site) override;
};

}  // namespace tarqo::mac
