#include "platform/sim/sim_bundles.h"

#include <algorithm>
#include <filesystem>
#include <utility>

namespace tarqo::sim {
namespace {

std::string fileName(const std::string& path) {
  return std::filesystem::path(path).filename().string();
}

std::string stem(const std::string& path) { return std::filesystem::path(path).stem().string(); }

bool isBundleName(const std::string& name) { return name.ends_with(".app"); }

}  // namespace

InstalledBundle& BundlesService::install(const std::string& path,
                                         std::optional<std::string> identifier) {
  InstalledBundle& bundle = bundles_[path];
  bundle.path = path;
  bundle.identifier = std::move(identifier);
  bundle.displayName = fileName(path);
  return bundle;
}

InstalledBundle* BundlesService::find(std::string_view identifier) {
  const auto found = std::find_if(bundles_.begin(), bundles_.end(), [&](const auto& each) {
    return each.second.identifier == identifier;
  });
  return found == bundles_.end() ? nullptr : &found->second;
}

App& BundlesService::start(const InstalledBundle& bundle) {
  App& app = startWithoutBundle(stem(bundle.path));
  app.facts.bundleId = bundle.identifier;
  app.facts.bundlePath = bundle.path;
  world_.processes[app.pid()].executable = bundle.path + "/Contents/MacOS/" + stem(bundle.path);
  return app;
}

App& BundlesService::startWithoutBundle(const std::string& name) {
  const Pid pid = world_.nextPid++;
  const auto instance = static_cast<std::uint64_t>(world_.apps.size() + 1);
  world_.apps.push_back(std::make_unique<App>(world_, pid, instance));
  App& app = *world_.apps.back();
  app.facts.localizedName = name;
  world_.processes[pid] = {1, "/usr/bin/" + name};
  if (world_.frontmost == nullptr) {
    world_.frontmost = &app;
  }
  return app;
}

std::vector<std::string> BundlesService::bundlesIn(const std::string& folder) {
  std::vector<std::string> names;
  if (unreadableFolders.contains(folder)) {
    return names;
  }
  for (const auto& [path, bundle] : bundles_) {
    const std::string name = fileName(path);
    if (isBundleName(name) && std::filesystem::path(path).parent_path() == folder) {
      names.push_back(name);
    }
  }
  return names;
}

std::optional<Bundle> BundlesService::bundleAt(const std::string& path) {
  const auto found = bundles_.find(path);
  if (found == bundles_.end() || !found->second.openable) {
    return std::nullopt;
  }
  return Bundle{found->second.identifier};
}

std::optional<std::string> BundlesService::infoText(const std::string& path, std::string_view key) {
  const auto found = bundles_.find(path);
  if (found == bundles_.end() || !found->second.openable) {
    return std::nullopt;
  }
  const auto text = found->second.info.find(std::string(key));
  return text == found->second.info.end() ? std::nullopt : std::optional(text->second);
}

std::string BundlesService::displayName(const std::string& path) {
  const auto found = bundles_.find(path);
  return found == bundles_.end() ? fileName(path) : found->second.displayName;
}

std::optional<std::string> BundlesService::recordedBundleOf(Pid pid) {
  const auto found = recorded.find(pid);
  return found == recorded.end() ? std::nullopt : std::optional(found->second);
}

std::string BundlesService::resolved(const std::string& path) {
  std::string result = std::filesystem::path(path).lexically_normal().string();
  if (result.size() > 1 && result.ends_with('/')) {
    result.pop_back();
  }
  for (const auto& [from, to] : links) {
    if (result == from || result.starts_with(from + "/")) {
      result.replace(0, from.size(), to);
    }
  }
  return result;
}

std::optional<std::string> BundlesService::pathForIdentifier(std::string_view bundleId) {
  const InstalledBundle* bundle = find(bundleId);
  return bundle == nullptr ? std::nullopt : std::optional(bundle->path);
}

App* BundlesService::runningOf(const InstalledBundle& bundle) const {
  const auto found = std::find_if(world_.apps.begin(), world_.apps.end(), [&](const auto& app) {
    return !app->terminated() && app->facts.bundlePath == bundle.path;
  });
  return found == world_.apps.end() ? nullptr : found->get();
}

void BundlesService::open(const std::string& path, bool activates, OpenCompletion completion) {
  world_.eventLog.note(Topic::bundles,
                       "open " + path + (activates ? " in front" : " in background"));
  const auto found = bundles_.find(path);
  if (found == bundles_.end()) {
    completion({std::nullopt, "The application cannot be found."});
    return;
  }
  const InstalledBundle& bundle = found->second;
  if (bundle.launch.isNever()) {
    return;
  }
  world_.clock.after(bundle.launch.delay(),
                     [this, &bundle, activates, completion = std::move(completion)] {
                       completeOpen(bundle, activates, completion);
                     });
}

void BundlesService::completeOpen(const InstalledBundle& bundle, bool activates,
                                  const OpenCompletion& completion) {
  if (bundle.launchError || !bundle.launch.hasContent()) {
    completion({std::nullopt, bundle.launchError});
    return;
  }
  App* app = runningOf(bundle);
  if (app == nullptr) {
    app = &start(bundle);
    if (bundle.onLaunch) {
      bundle.onLaunch(*app);
    }
  } else if (bundle.onReopen) {
    bundle.onReopen(*app);
  }
  if (activates) {
    app->requestFront();
  }
  completion({app->running(), std::nullopt});
}

void BundlesService::openSite(const std::string& bundleId, const std::string& site) {
  world_.eventLog.note(Topic::bundles, "open site " + bundleId + " " + site);
  const InstalledBundle* bundle = find(bundleId);
  if (bundle == nullptr || !bundle->onOpenSite) {
    return;
  }
  world_.clock.after(bundle->opensSiteAfter, [this, bundle, site] {
    if (App* app = runningOf(*bundle)) {
      bundle->onOpenSite(*app, site);
    }
  });
}

}  // namespace tarqo::sim
