// Simulated installed applications, and how each behaves when it is opened.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/bundles.h"
#include "platform/sim/sim_world.h"

namespace tarqo::sim {

/// One installed application, all of it the scene's to change.
struct InstalledBundle {
  std::string path;
  std::optional<std::string> identifier;
  std::string displayName;  ///< The file's name unless changed.
  std::map<std::string, std::string> info;
  bool openable = true;  ///< False: a bundle by its name that cannot be opened.

  // When it is opened.
  /// When and whether the completion comes, for a launch as well as for the running application;
  /// without content it brings neither an application nor an error.
  Reply launch = Reply::now();
  std::optional<std::string> launchError;  ///< The completion brings this, and nothing starts.
  /// Builds what the new application shows, at the instant at which the completion comes.
  std::function<void(App&)> onLaunch;
  /// What the running application does when it is opened once more.
  std::function<void(App&)> onReopen;
  /// What it does when asked to show a site; nothing by default.
  std::function<void(App&, const std::string& site)> onOpenSite;
  Duration opensSiteAfter{};
};

class BundlesService final : public Bundles {
 public:
  explicit BundlesService(World& world) : world_(world) {}

  // The scene.
  std::vector<std::string> folders{"/Applications", "/System/Applications",
                                   "/Users/user/Applications"};
  std::set<std::string> unreadableFolders;
  std::map<Pid, std::string> recorded;       ///< What `recordedBundleOf` answers.
  std::map<std::string, std::string> links;  ///< Symbolic links, from path to path.

  /// The bundle at a path, installed now if it was not.
  InstalledBundle& install(const std::string& path, std::optional<std::string> identifier);
  [[nodiscard]] InstalledBundle* find(std::string_view identifier);
  /// Starts a process of a bundle at once.
  App& start(const InstalledBundle& bundle);
  App& startWithoutBundle(const std::string& name);

  [[nodiscard]] std::vector<std::string> applicationFolders() override { return folders; }
  [[nodiscard]] std::vector<std::string> bundlesIn(const std::string& folder) override;
  [[nodiscard]] std::optional<Bundle> bundleAt(const std::string& path) override;
  [[nodiscard]] std::optional<std::string> infoText(const std::string& path,
                                                    std::string_view key) override;
  [[nodiscard]] std::string displayName(const std::string& path) override;
  [[nodiscard]] std::optional<std::string> recordedBundleOf(Pid pid) override;
  [[nodiscard]] std::string resolved(const std::string& path) override;
  [[nodiscard]] std::optional<std::string> pathForIdentifier(std::string_view bundleId) override;
  void open(const std::string& path, bool activates, OpenCompletion completion) override;
  void openSite(const std::string& bundleId, const std::string& site) override;

 private:
  [[nodiscard]] App* runningOf(const InstalledBundle& bundle) const;
  void completeOpen(const InstalledBundle& bundle, bool activates,
                    const OpenCompletion& completion);

  World& world_;
  std::map<std::string, InstalledBundle> bundles_;  ///< By path.
};

}  // namespace tarqo::sim
