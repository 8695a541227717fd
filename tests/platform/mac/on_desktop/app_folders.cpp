#include "tests/platform/mac/on_desktop/app_folders.h"

#include <utility>

namespace standin {

using tarqo::RunningApplication;

namespace {

constexpr std::string_view kFolder = "/Applications";
constexpr std::string_view kEntry = ".desktop";

}  // namespace

std::string AppFolders::shown(const std::string& path) {
  std::string name = path.substr(path.rfind('/') + 1);
  if (name.ends_with(kEntry)) {
    name.resize(name.size() - kEntry.size());
  }
  return std::string(kFolder) + "/" + name + ".app";
}

RunningApplication AppFolders::shown(RunningApplication application) const {
  if (application.bundlePath) {
    application.bundlePath = shown(*application.bundlePath);
  }
  return application;
}

std::map<std::string, std::string> AppFolders::all() const {
  std::map<std::string, std::string> paths;
  for (const std::string& folder : bundles_.applicationFolders()) {
    for (const std::string& name : bundles_.bundlesIn(folder)) {
      const std::string path = folder + "/" + name;
      paths[shown(path)] = path;  // Later folders overrule earlier ones.
    }
  }
  return paths;
}

std::string AppFolders::own(const std::string& path) const {
  const auto paths = all();
  const auto found = paths.find(path);
  return found == paths.end() ? path : found->second;
}

std::vector<std::string> AppFolders::names() const {
  std::vector<std::string> result;
  for (const auto& [path, entry] : all()) {
    result.push_back(path.substr(kFolder.size() + 1));
  }
  return result;
}

std::vector<std::string> ShownBundles::applicationFolders() { return {std::string(kFolder)}; }
std::vector<std::string> ShownBundles::bundlesIn(const std::string& folder) {
  return folder == kFolder ? folders_.names() : std::vector<std::string>{};
}
std::optional<tarqo::Bundle> ShownBundles::bundleAt(const std::string& path) {
  return own_.bundleAt(folders_.own(path));
}
std::optional<std::string> ShownBundles::infoText(const std::string& path, std::string_view key) {
  return own_.infoText(folders_.own(path), key);
}
std::string ShownBundles::displayName(const std::string& path) {
  return own_.displayName(folders_.own(path));
}
std::optional<std::string> ShownBundles::recordedBundleOf(tarqo::Pid pid) {
  const auto path = own_.recordedBundleOf(pid);
  return path ? std::optional(AppFolders::shown(*path)) : std::nullopt;
}
std::string ShownBundles::resolved(const std::string& path) { return path; }
std::optional<std::string> ShownBundles::pathForIdentifier(std::string_view bundleId) {
  const auto path = own_.pathForIdentifier(bundleId);
  return path ? std::optional(AppFolders::shown(*path)) : std::nullopt;
}
void ShownBundles::open(const std::string& path, bool activates, tarqo::OpenCompletion completion) {
  own_.open(folders_.own(path), activates,
            [this, completion = std::move(completion)](tarqo::OpenedApplication opened) {
              if (opened.application) {
                opened.application = folders_.shown(*std::move(opened.application));
              }
              completion(std::move(opened));
            });
}
void ShownBundles::openSite(const std::string& bundleId, const std::string& site) {
  own_.openSite(bundleId, site);
}

std::vector<RunningApplication> ShownWorkspace::shown(std::vector<RunningApplication> all) const {
  for (RunningApplication& each : all) {
    each = folders_.shown(std::move(each));
  }
  return all;
}
std::vector<RunningApplication> ShownWorkspace::runningApplications() {
  return shown(own_.runningApplications());
}
std::vector<RunningApplication> ShownWorkspace::runningApplications(std::string_view bundleId) {
  return shown(own_.runningApplications(bundleId));
}
std::optional<RunningApplication> ShownWorkspace::runningApplication(tarqo::Pid pid) {
  auto found = own_.runningApplication(pid);
  return found ? std::optional(folders_.shown(*std::move(found))) : std::nullopt;
}
bool ShownWorkspace::isTerminated(const tarqo::ApplicationId& application) {
  return own_.isTerminated(application);
}
bool ShownWorkspace::isHidden(const tarqo::ApplicationId& application) {
  return own_.isHidden(application);
}
void ShownWorkspace::unhide(const tarqo::ApplicationId& application) { own_.unhide(application); }
void ShownWorkspace::activate(const tarqo::ApplicationId& application) {
  own_.activate(application);
}
std::optional<tarqo::Pid> ShownWorkspace::frontmostApplication() {
  return own_.frontmostApplication();
}

}  // namespace standin
