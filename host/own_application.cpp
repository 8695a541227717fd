#include "host/own_application.h"

#include <string_view>

namespace tarqo {
namespace {

// The innermost folder of a path whose extension is exactly "app".
std::optional<std::string> innermostBundle(std::string path) {
  while (path.size() > 1) {
    const std::size_t slash = path.rfind('/');
    const std::string_view name = std::string_view(path).substr(slash + 1);
    if (name.size() > 4 && name.ends_with(".app")) {
      return path;
    }
    if (slash == std::string::npos || slash == 0) {
      break;
    }
    path.resize(slash);
  }
  return std::nullopt;
}

}  // namespace

const std::optional<std::string>& OwnApplication::bundle() {
  if (!bundle_) {
    bundle_ = innermostBundle(platform_.processes.ownExecutable());
  }
  return *bundle_;
}

bool OwnApplication::owns(Pid pid) {
  if (!bundle()) {
    return false;
  }
  const auto running = platform_.workspace.runningApplication(pid);
  return running && running->bundlePath &&
         platform_.bundles.resolved(*running->bundlePath) == *bundle();
}

}  // namespace tarqo
