// Installed applications as desktop entries.
#pragma once

#include "platform/bundles.h"
#include "platform/clock.h"
#include "platform/linux/apps/applications.h"

namespace tarqo::lnx::apps {

/// A bundle is a ".desktop" file; its identifier is the name of that file without the ending. Left
/// out are entries that another folder's entry of the same name overrules, and those that a user
/// cannot launch into a window: hidden, not for display here, without a program, or run in a
/// terminal.
class LinuxBundles final : public Bundles {
 public:
  /// `clock` outlives every launch.
  LinuxBundles(Applications& applications, Clock& clock)
      : applications_(applications), clock_(clock) {}

  std::vector<std::string> applicationFolders() override;
  std::vector<std::string> bundlesIn(const std::string& folder) override;
  std::optional<Bundle> bundleAt(const std::string& path) override;

  /// Always nullopt: entries have no version.
  std::optional<std::string> infoText(const std::string& path, std::string_view key) override;
  std::string displayName(const std::string& path) override;
  std::optional<std::string> recordedBundleOf(Pid pid) override;
  std::string resolved(const std::string& path) override;
  std::optional<std::string> pathForIdentifier(std::string_view bundleId) override;

  /// An application that has a window already only gets it back from its icon, or to the front when
  /// it `activates`: starting the program again would open a second window in most of them.
  ///
  /// A path that was just found for an identifier opens the entry that was found, even if its file
  /// has been replaced since.
  void open(const std::string& path, bool activates, OpenCompletion completion) override;

  void openSite(const std::string& bundleId, const std::string& site) override;

 private:
  [[nodiscard]] FoundEntry launchableAt(const std::string& path);
  [[nodiscard]] bool showExisting(const std::string& bundleId, bool activates,
                                  const OpenCompletion& completion);

  Applications& applications_;
  Clock& clock_;
  FoundEntry found_;  ///< By `pathForIdentifier`, the last time.
};

}  // namespace tarqo::lnx::apps
