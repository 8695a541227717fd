// Installed applications of this desktop as a Mac has them: folders in /Applications whose names
// end in ".app".
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/bundles.h"
#include "platform/workspace.h"

namespace standin {

/// Paths of this desktop and of the Mac that it is shown as.
class AppFolders {
 public:
  explicit AppFolders(tarqo::Bundles& bundles) : bundles_(bundles) {}

  /// "/Applications/calculator.app" for ".../calculator.desktop".
  [[nodiscard]] static std::string shown(const std::string& path);
  [[nodiscard]] tarqo::RunningApplication shown(tarqo::RunningApplication application) const;
  /// The path of this desktop; the path itself when it stands for none.
  [[nodiscard]] std::string own(const std::string& path) const;
  /// The names of all in /Applications.
  [[nodiscard]] std::vector<std::string> names() const;

 private:
  [[nodiscard]] std::map<std::string, std::string> all() const;

  tarqo::Bundles& bundles_;
};

class ShownBundles final : public tarqo::Bundles {
 public:
  explicit ShownBundles(tarqo::Bundles& own) : own_(own), folders_(own) {}

  std::vector<std::string> applicationFolders() override;
  std::vector<std::string> bundlesIn(const std::string& folder) override;
  std::optional<tarqo::Bundle> bundleAt(const std::string& path) override;
  std::optional<std::string> infoText(const std::string& path, std::string_view key) override;
  std::string displayName(const std::string& path) override;
  std::optional<std::string> recordedBundleOf(tarqo::Pid pid) override;
  std::string resolved(const std::string& path) override;
  std::optional<std::string> pathForIdentifier(std::string_view bundleId) override;
  void open(const std::string& path, bool activates, tarqo::OpenCompletion completion) override;
  void openSite(const std::string& bundleId, const std::string& site) override;

 private:
  tarqo::Bundles& own_;
  AppFolders folders_;
};

class ShownWorkspace final : public tarqo::Workspace {
 public:
  ShownWorkspace(tarqo::Workspace& own, tarqo::Bundles& bundles) : own_(own), folders_(bundles) {}

  std::vector<tarqo::RunningApplication> runningApplications() override;
  std::vector<tarqo::RunningApplication> runningApplications(std::string_view bundleId) override;
  std::optional<tarqo::RunningApplication> runningApplication(tarqo::Pid pid) override;
  bool isTerminated(const tarqo::ApplicationId& application) override;
  bool isHidden(const tarqo::ApplicationId& application) override;
  void unhide(const tarqo::ApplicationId& application) override;
  void activate(const tarqo::ApplicationId& application) override;
  std::optional<tarqo::Pid> frontmostApplication() override;

 private:
  [[nodiscard]] std::vector<tarqo::RunningApplication> shown(
      std::vector<tarqo::RunningApplication> all) const;

  tarqo::Workspace& own_;
  AppFolders folders_;
};

}  // namespace standin
