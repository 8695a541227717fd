#include "host/responsible_host.h"

namespace tarqo {
namespace {

constexpr std::string_view kAppSuffix = ".app";
constexpr int kMaxPasses = 64;

}  // namespace

Json ResponsibleHost::json() const {
  Json object = {{"name", name}};
  if (bundleId) {
    object["bundleId"] = *bundleId;
  }
  if (pid) {
    object["pid"] = *pid;
  }
  return object;
}

std::optional<std::string> outermostBundle(const std::string& path) {
  for (std::size_t begin = 0; begin <= path.size();) {
    const std::size_t end = std::min(path.find('/', begin), path.size());
    if (std::string_view(path).substr(begin, end - begin).ends_with(kAppSuffix)) {
      return path.substr(0, end);
    }
    begin = end + 1;
  }
  return std::nullopt;
}

std::string withoutAppSuffix(std::string name) {
  if (name.ends_with(kAppSuffix)) {
    name.resize(name.size() - kAppSuffix.size());
  }
  return name;
}

ResponsibleHost HostFinder::host() {
  if (!responsibleHostMemo_) {
    responsibleHostMemo_ = responsibleHost(std::nullopt);
  }
  return responsibleHostMemo_->value_or(
      ResponsibleHost{std::string(HOST_FALLBACK), std::nullopt, std::nullopt});
}

std::optional<ResponsibleHost> HostFinder::responsibleHost(std::optional<Pid> start) {
  const std::optional<std::string> ownBundle = outermostBundle(platform_.processes.ownExecutable());
  Pid pid = start.value_or(platform_.processes.ownParentPid());
  for (int pass = 1; pass <= kMaxPasses && pid >= 2; ++pass) {
    if (auto found = hostAt(pid, ownBundle)) {
      return found;
    }
    const std::optional<Pid> parent = platform_.processes.parentPid(pid);
    if (!parent || *parent == pid) {
      return std::nullopt;
    }
    pid = *parent;
  }
  return std::nullopt;
}

std::optional<std::string> HostFinder::bundleOf(Pid pid) {
  if (auto recorded = platform_.bundles.recordedBundleOf(pid)) {
    return recorded;
  }
  const std::optional<std::string> executable = platform_.processes.executablePath(pid);
  return executable ? outermostBundle(*executable) : std::nullopt;
}

// The process at `pid` as host; null when it is no application, or only a process that lives in the
// helper's or the companion application's bundle.
std::optional<ResponsibleHost> HostFinder::hostAt(Pid pid,
                                                  const std::optional<std::string>& ownBundle) {
  const std::optional<std::string> bundle = bundleOf(pid);
  if (!bundle) {
    return std::nullopt;
  }
  ResponsibleHost candidate = bundleIdentity(*bundle, pid);
  if (bundle != ownBundle && candidate.bundleId != OWN_BUNDLE_ID) {
    return candidate;
  }
  const auto running = platform_.workspace.runningApplication(pid);
  if (running && running->bundleId == OWN_BUNDLE_ID) {
    return candidate;
  }
  return std::nullopt;
}

ResponsibleHost HostFinder::bundleIdentity(const std::string& path, Pid pid) {
  ResponsibleHost host{withoutAppSuffix(platform_.bundles.displayName(path)), std::nullopt, pid};
  const auto running = platform_.workspace.runningApplication(pid);
  if (running && running->bundlePath == path) {
    host.name = running->localizedName.value_or(host.name);
    host.bundleId = running->bundleId;
  }
  if (!host.bundleId) {
    if (const auto bundle = platform_.bundles.bundleAt(path)) {
      host.bundleId = bundle->identifier;
    }
  }
  if (host.name.empty()) {
    host.name = HOST_FALLBACK;
  }
  return host;
}

}  // namespace tarqo
