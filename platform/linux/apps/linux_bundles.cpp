#include "platform/linux/apps/linux_bundles.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "platform/linux/apps/launcher.h"
#include "platform/linux/x11/window_manager.h"

namespace tarqo::lnx::apps {

std::vector<std::string> LinuxBundles::applicationFolders() { return entryFolders(); }

std::vector<std::string> LinuxBundles::bundlesIn(const std::string& folder) {
  return listEntries(folder).files;
}

FoundEntry LinuxBundles::launchableAt(const std::string& path) {
  FoundEntry entry = applications_.entries().byPath(path);
  return entry != nullptr && entry->launchable ? entry : nullptr;
}

std::optional<Bundle> LinuxBundles::bundleAt(const std::string& path) {
  const FoundEntry entry = launchableAt(path);
  return entry != nullptr ? std::optional(Bundle{entry->id}) : std::nullopt;
}

std::optional<std::string> LinuxBundles::infoText(const std::string& /*path*/,
                                                  std::string_view /*key*/) {
  return std::nullopt;
}

std::string LinuxBundles::displayName(const std::string& path) {
  const FoundEntry entry = applications_.entries().byPath(path);
  if (entry != nullptr && !entry->name.empty()) {
    return entry->name;
  }
  return path.substr(path.rfind('/') + 1);
}

std::optional<std::string> LinuxBundles::recordedBundleOf(Pid pid) {
  const FoundEntry entry = applications_.entryOf(pid);
  return entry != nullptr ? std::optional(entry->path) : std::nullopt;
}

std::string LinuxBundles::resolved(const std::string& path) {
  std::error_code error;
  const std::filesystem::path real = std::filesystem::weakly_canonical(path, error);
  return error ? path : real.string();
}

std::optional<std::string> LinuxBundles::pathForIdentifier(std::string_view bundleId) {
  found_ = applications_.entries().byId(bundleId);
  if (found_ == nullptr || !found_->launchable) {
    found_ = nullptr;
    return std::nullopt;
  }
  return found_->path;
}

bool LinuxBundles::showExisting(const std::string& bundleId, bool activates,
                                const OpenCompletion& completion) {
  const std::vector<RunningApplication> running = applications_.runningOf(bundleId);
  // Not before that: that replaces a server that was lost, which would end this reference.
  x11::Server* server = applications_.display().server();
  if (server == nullptr) {
    return false;
  }
  const x11::Windows windows = x11::readWindows(*server);
  for (const RunningApplication& application : running) {
    const x11::Window* window = x11::principalWindow(windows, application.id.pid, true);
    if (window == nullptr) {
      continue;
    }
    if (activates || window->minimised) {
      x11::activateWindow(*server, windows, *window);
    }
    completion({application, std::nullopt});
    return true;
  }
  return false;
}

void LinuxBundles::open(const std::string& path, bool activates, OpenCompletion completion) {
  const FoundEntry justFound = std::exchange(found_, nullptr);
  const FoundEntry entry =
      justFound != nullptr && justFound->path == path ? justFound : launchableAt(path);
  if (entry == nullptr) {
    completion({std::nullopt, "There is no application to open at " + path + "."});
    return;
  }
  if (showExisting(entry->id, activates, completion)) {
    return;
  }
  if (const std::optional<Pid> starting = applications_.startingOf(entry->id)) {
    awaitLaunched(clock_, *entry, *starting, std::move(completion));
  } else {
    launch(clock_, *entry, {}, std::move(completion));
  }
}

void LinuxBundles::openSite(const std::string& bundleId, const std::string& site) {
  const FoundEntry entry = applications_.entries().byId(bundleId);
  if (entry != nullptr && entry->launchable) {
    launch(clock_, *entry, {"--new-window", site}, nullptr);
  }
}

}  // namespace tarqo::lnx::apps
