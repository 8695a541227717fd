#include "platform/linux/apps/launcher.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <optional>
#include <set>
#include <string_view>
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

/// GTK 2 has its bridge to AT-SPI in two modules that the user's settings or this variable name.
/// GTK 3 and programs of another toolkit do without them, and say so on standard error at most.
constexpr const char* kGtkModules = "GTK_MODULES";
constexpr std::array<std::string_view, 2> kGtk2Bridge{"gail", "atk-bridge"};

/// The user's own modules with those of the bridge behind them.
std::string gtkModules() {
  const char* theirs = std::getenv(kGtkModules);
  std::vector<std::string> modules = splitList(theirs != nullptr ? theirs : "", ':');
  for (const std::string_view module : kGtk2Bridge) {
    if (std::find(modules.begin(), modules.end(), module) == modules.end()) {
      modules.emplace_back(module);
    }
  }
  std::string variable(kGtkModules);
  char separator = '=';
  for (const std::string& module : modules) {
    variable += separator + module;
    separator = ':';
  }
  return variable;
}

/// Swing reports to AT-SPI by a class that the virtual machine has to be told of. It refuses to
/// start when the class is not there.
constexpr const char* kJavaOptions = "JAVA_TOOL_OPTIONS";
constexpr const char* kJavaBridge = "/usr/share/java/java-atk-wrapper.jar";

/// The user's own options with the bridge behind them, where it is installed.
std::optional<std::string> javaOptions() {
  if (access(kJavaBridge, R_OK) != 0) {
    return std::nullopt;
  }
  const char* theirs = std::getenv(kJavaOptions);
  return std::string(kJavaOptions) + '=' + (theirs != nullptr ? theirs : "") +
         " -Djavax.accessibility.assistive_technologies=org.GNOME.Accessibility.AtkWrapper"
         " -Xbootclasspath/a:" +
         kJavaBridge;
}

SpawnRequest requestOf(const DesktopEntry& entry, const std::vector<std::string>& extraArguments) {
  SpawnRequest request;
  request.program = resolvedProgram(entry.command.front());
  request.arguments = entry.command;
  request.arguments.insert(request.arguments.end(), extraArguments.begin(), extraArguments.end());
  // Variables of our own launch, and those that switch accessibility off.
  request.environment = environmentWithout(
      {"DESKTOP_STARTUP_ID", "XDG_ACTIVATION_TOKEN", "GIO_LAUNCHED_DESKTOP_FILE",
       "GIO_LAUNCHED_DESKTOP_FILE_PID", "NO_AT_BRIDGE", "GTK_A11Y", "GNOME_ACCESSIBILITY",
       "ACCESSIBILITY_ENABLED", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON", kGtkModules});
  for (const char* wanted :
       {"GNOME_ACCESSIBILITY=1", "ACCESSIBILITY_ENABLED=1", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1"}) {
    request.environment.emplace_back(wanted);
  }
  request.environment.push_back(gtkModules());
  if (std::optional<std::string> options = javaOptions()) {
    std::erase_if(request.environment, [](const std::string& variable) {
      return variable.starts_with(std::string(kJavaOptions) + '=');
    });
    request.environment.push_back(*std::move(options));
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

const std::string& nameOf(const DesktopEntry& entry) {
  return entry.name.empty() ? entry.id : entry.name;
}

std::string failureText(const DesktopEntry& entry, const ChildEnd& end) {
  const std::string& name = nameOf(entry);
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
  /// `isOurs`: the helper has started it, and may ask how it ended.
  LaunchWatch(Clock& clock, const DesktopEntry& entry, Pid child, bool isOurs)
      : clock_(clock), entry_(entry), child_(child), isOurs_(isOurs) {}

  OpenedApplication result() {
    const Instant deadline = clock_.now() + kWindowTime;
    while (clock_.now() < deadline) {
      if (auto application = withWindow()) {
        return {std::move(application), std::nullopt};
      }
      if (isOurs_ && !ended_ && hasEnded(child_, end_)) {
        ended_ = true;
        if (!end_.exited || end_.status != 0) {
          return {std::nullopt, failureText(entry_, end_)};
        }
      }
      clock_.sleep(kPollInterval);
    }
    if (applications_.startingOf(entry_.id)) {
      return {std::nullopt, nameOf(entry_) + " has not finished starting. Connect again later."};
    }
    return {ended_ ? std::nullopt : applications_.running(child_), std::nullopt};
  }

  [[nodiscard]] bool childHasEnded() const { return ended_; }

 private:
  /// The application with a window that is the child, its descendant, or another instance of it. A
  /// splash screen is not yet its window, and often not even one of its process.
  std::optional<RunningApplication> withWindow() {
    const x11::Windows windows = applications_.windows();
    const std::vector<RunningApplication> ofEntry = applications_.runningOf(entry_.id);
    std::set<Pid> asked;
    for (const x11::Window& window : windows.frontToBack) {
      if (!window.isOrdinary() || window.isSplash() || !window.viewable ||
          !asked.insert(window.pid).second) {
        continue;
      }
      const auto own = std::find_if(ofEntry.begin(), ofEntry.end(), [&](const auto& application) {
        return application.id.pid == window.pid;
      });
      if (own != ofEntry.end()) {
        return *own;
      }
      if (descendsFrom(window.pid, child_)) {
        return applications_.running(window.pid);
      }
    }
    return std::nullopt;
  }

  Clock& clock_;
  const DesktopEntry& entry_;
  Pid child_;
  bool isOurs_;
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
    LaunchWatch watch(clock, entry, child.pid, true);
    completion(watch.result());
    ended = watch.childHasEnded();
  }
  if (!ended) {
    awaitEnd(child.pid);
  }
}

/// Runs a body on a thread of its own; nothing at all when there can be none.
template <typename Body>
void inBackground(Body body) {
  try {
    std::thread([body = std::move(body)] {
      try {
        body();
      } catch (const std::exception&) {
        return;
      }
    }).detach();
  } catch (const std::exception&) {
    return;
  }
}

}  // namespace

void launch(Clock& clock, const DesktopEntry& entry, const std::vector<std::string>& extraArguments,
            OpenCompletion completion) {
  inBackground(
      [&clock, entry, request = requestOf(entry, extraArguments),
       completion = std::move(completion)] { runLaunch(clock, entry, request, completion); });
}

void awaitLaunched(Clock& clock, const DesktopEntry& entry, Pid program,
                   OpenCompletion completion) {
  inBackground([&clock, entry, program, completion = std::move(completion)] {
    completion(LaunchWatch(clock, entry, program, false).result());
  });
}

}  // namespace tarqo::lnx::apps
