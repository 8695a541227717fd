// The "listTargets" method: the applications that a client can connect to, installed or running.

#include <algorithm>
#include <map>
#include <vector>

#include "host/responsible_host.h"
#include "methods/methods.h"
#include "platform/unicode.h"

namespace tarqo::methods {
namespace {

struct Target {
  std::string name;
  std::string bundleId;
  bool running = false;
};

using Targets = std::map<std::string, Target>;

void addInstalled(Bundles& bundles, Targets& targets) {
  for (const std::string& folder : bundles.applicationFolders()) {
    for (const std::string& entry : bundles.bundlesIn(folder)) {
      std::string path = folder;
      path.append("/").append(entry);
      const auto bundle = bundles.bundleAt(path);
      if (bundle && bundle->identifier && !bundle->identifier->empty()) {
        targets[*bundle->identifier] = {withoutAppSuffix(bundles.displayName(path)),
                                        *bundle->identifier, false};
      }
    }
  }
}

// The name of a running application replaces that of its bundle: it is the one the user sees now.
void addRunning(Workspace& workspace, Targets& targets) {
  for (const RunningApplication& application : workspace.runningApplications()) {
    const bool named = application.localizedName && !application.localizedName->empty();
    const bool identified = application.bundleId && !application.bundleId->empty();
    if (named && identified && application.policy == ActivationPolicy::regular &&
        !workspace.isTerminated(application.id)) {
      targets[*application.bundleId] = {*application.localizedName, *application.bundleId, true};
    }
  }
}

}  // namespace

Json listTargets(const Platform& platform) {
  Targets found;
  addInstalled(platform.bundles, found);
  addRunning(platform.workspace, found);

  std::vector<Target> sorted;  // By bundle identifier, as the map held them.
  for (auto& [bundleId, target] : found) {
    sorted.push_back(std::move(target));
  }
  std::stable_sort(sorted.begin(), sorted.end(), [](const Target& a, const Target& b) {
    return unicode::compareForDisplay(a.name, b.name) < 0;
  });

  Json targets = Json::array();
  for (const Target& target : sorted) {
    targets.push_back({{"name", target.name},
                       {"bundleId", target.bundleId},
                       {"running", target.running},
                       {"kind", "macos"}});
  }
  return {{"targets", std::move(targets)}};
}

}  // namespace tarqo::methods
