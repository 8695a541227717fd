#include "platform/linux/apps/launcher.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <optional>
#include <set>
#include <thread>
#include <utility>

#include "platform/linux/apps/applications.h"
#include "platform/linux/base/proc.h"
#include "platform/linux/base/spawn.h"
#include "platform/linux/x11/window_manager.h"

namespace tarqo::lnx::apps {
namespace {

/// Shorter than callers wait, so that they still receive the outcome.
constexpr std::chrono::seconds kWindowTime{9};
constexpr std::chrono::milliseconds kPollInterval{30};

/// A program that shows its window from a process further down than this is not recognised by its
/// descent.
constexpr int kMaxDescent = 8;

SpawnRequest requestOf(const DesktopEntry& entry, const std::vector<std::string>& extraArguments) {
  SpawnRequest request;
  request.program = resolvedProgram(entry.command.front());
  request.arguments = entry.command;
  request.arguments.insert(request.arguments.end(), extraArguments.begin(), extraArguments.end());
  // Variables of our own launch, and those that switch accessibility off.
  request.environment = environmentWithout(
      {"DESKTOP_STARTUP_ID", "XDG_ACTIVATION_TOKEN", "GIO_LAUNCHED_DESKTOP_FILE",
       "GIO_LAUNCHED_DESKTOP_FILE_PID", "NO_AT_BRIDGE", "GTK_A11Y", "GNOME_ACCESSIBILITY",
       "ACCESSIBILITY_ENABLED", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON"});
  for (const char* wanted :
       {"GNOME_ACCESSIBILITY=1", "ACCESSIBILITY_ENABLED=1", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1"}) {
    request.environment.emplace_back(wanted);
  }
  request.environment.push_back("GIO_LAUNCHED_DESKTOP_FILE=" + entry.path);
  request.pidVariable = "GIO_LAUNCHED_DESKTOP_FILE_PID";
  request.folder = entry.folder;
  request.ownSession = true;
  return request;
}

bool descendsFrom(Pid pid, Pid ancestor) {
  for (int depth = 0; depth < kMaxDescent && pid > 1; ++depth) {
    if (pid == ancestor) {
      return true;
    }
    const auto status = processStatus(pid);
    pid = status ? status->parent : 0;
  }
  return false;
}

std::string failureText(const DesktopEntry& entry, const ChildEnd& end) {
  const std::string name = entry.name.empty() ? entry.id : entry.name;
  if (end.exited) {
    return name + " ended with status " + std::to_string(end.status) +
           " before it showed a window.";
  }
  return name + " was ended by signal " + std::to_string(end.status) +
         " before it showed a window.";
}

/// Watches the outcome of a launch. Has its own connection, since the worker uses the other one.
class LaunchWatch {
 public:
  LaunchWatch(Clock& clock, const DesktopEntry& entry, Pid child)
      : clock_(clock), entry_(entry), child_(child) {}

  OpenedApplication result() {
    const Instant deadline = clock_.now() + kWindowTime;
    while (clock_.now() < deadline) {
      if (auto application = withWindow()) {
        return {std::move(application), std::nullopt};
      }
      if (!ended_ && hasEnded(child_, end_)) {
        ended_ = true;
        if (!end_.exited || end_.status != 0) {
          return {std::nullopt, failureText(entry_, end_)};
        }
      }
      clock_.sleep(kPollInterval);
    }
    return {ended_ ? std::nullopt : applications_.running(child_), std::nullopt};
  }

  [[nodiscard]] bool childHasEnded() const { return ended_; }

 private:
  /// The application with a window that is the child, its descendant, or another instance of it.
  std::optional<RunningApplication> withWindow() {
    const x11::Windows windows = applications_.windows();
    std::set<Pid> asked;
    for (const x11::Window& window : windows.frontToBack) {
      if (!window.isOrdinary() || !window.viewable || !asked.insert(window.pid).second) {
        continue;
      }
      auto application = applications_.running(window.pid);
      if (application && (application->bundleId == entry_.id || descendsFrom(window.pid, child_))) {
        return application;
      }
    }
    return std::nullopt;
  }

  Clock& clock_;
  const DesktopEntry& entry_;
  Pid child_;
  x11::Display display_{clock_};
  Applications applications_{display_, clock_};
  bool ended_ = false;
  ChildEnd end_;
};

void runLaunch(Clock& clock, const DesktopEntry& entry, const SpawnRequest& request,
               const OpenCompletion& completion) {
  const Spawned child = spawn(request);
  if (child.pid == 0) {
    if (completion) {
      completion({std::nullopt, "The program of " + entry.path +
                                    " could not be started: " + std::strerror(child.error)});
    }
    return;
  }
  bool ended = false;
  if (completion) {
    LaunchWatch watch(clock, entry, child.pid);
    completion(watch.result());
    ended = watch.childHasEnded();
  }
  if (!ended) {
    awaitEnd(child.pid);
  }
}

}  // namespace

void launch(Clock& clock, const DesktopEntry& entry, const std::vector<std::string>& extraArguments,
            OpenCompletion completion) {
  try {
    std::thread([&clock, entry, request = requestOf(entry, extraArguments),
                 completion = std::move(completion)] {
      try {
        runLaunch(clock, entry, request, completion);
      } catch (const std::exception&) {
        return;
      }
    }).detach();
  } catch (const std::exception&) {
    return;
  }
}

}  // namespace tarqo::lnx::apps
