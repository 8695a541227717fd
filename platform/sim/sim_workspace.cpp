#include "platform/sim/sim_workspace.h"

namespace tarqo::sim {
namespace {

std::string nameOf(const App& app) {
  return app.facts.bundleId.value_or(app.facts.localizedName.value_or(std::to_string(app.pid())));
}

}  // namespace

std::vector<RunningApplication> WorkspaceService::runningApplications() {
  std::vector<RunningApplication> result;
  for (const auto& app : world_.apps) {
    if (app->listed()) {
      result.push_back(app->running());
    }
  }
  return result;
}

std::vector<RunningApplication> WorkspaceService::runningApplications(std::string_view bundleId) {
  std::vector<RunningApplication> result = runningApplications();
  std::erase_if(result, [&](const RunningApplication& each) { return each.bundleId != bundleId; });
  return result;
}

std::optional<RunningApplication> WorkspaceService::runningApplication(Pid pid) {
  const App* app = world_.appOf(pid);
  return app == nullptr ? std::nullopt : std::optional(app->running());
}

bool WorkspaceService::isTerminated(const ApplicationId& application) {
  const App* app = world_.appOf(application);
  return app == nullptr || app->terminated();
}

bool WorkspaceService::isHidden(const ApplicationId& application) {
  const App* app = world_.appOf(application);
  return app != nullptr && app->facts.hidden;
}

void WorkspaceService::unhide(const ApplicationId& application) {
  App* app = world_.appOf(application);
  if (app == nullptr || app->terminated()) {
    return;
  }
  world_.eventLog.note(Topic::workspace, "unhide " + nameOf(*app));
  if (app->facts.unhides) {
    app->facts.hidden = false;
  }
}

void WorkspaceService::activate(const ApplicationId& application) {
  App* app = world_.appOf(application);
  if (app == nullptr || app->terminated()) {
    return;
  }
  world_.eventLog.note(Topic::workspace, "activate " + nameOf(*app));
  app->requestFront();
}

std::optional<Pid> WorkspaceService::frontmostApplication() { return world_.keyReceiver(); }

}  // namespace tarqo::sim
