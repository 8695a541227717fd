#include "platform/linux/apps/applications.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <set>
#include <utility>

#include "platform/linux/base/proc.h"
#include "platform/linux/base/spawn.h"

namespace tarqo::lnx::apps {
namespace {

/// How many arguments of a command line may come before an interpreter's script.
constexpr std::size_t kScriptSearch = 4;

/// A program is started by a script, or by a launcher, not by a longer chain of them.
constexpr int kMaxWrappers = 4;

std::vector<std::string> resolvedPaths(const std::vector<std::string>& commandLine) {
  std::vector<std::string> paths;
  for (std::size_t i = 1; i < std::min(commandLine.size(), kScriptSearch + 1); ++i) {
    if (commandLine[i].starts_with('/')) {
      if (std::string path = resolvedProgram(commandLine[i]); !path.empty()) {
        paths.push_back(std::move(path));
      }
    }
  }
  return paths;
}

/// The traces that the launch of a desktop entry leaves on the process.
ProcessEvidence launchEvidence(Pid pid, Pid parent) {
  ProcessEvidence evidence;
  evidence.controlGroup = controlGroupOf(pid);
  if (!entryIdsOfControlGroup(evidence.controlGroup).empty()) {
    evidence.leadsControlGroup = controlGroupOf(parent) != evidence.controlGroup;
  }
  // The variables are inherited by children, so they count only for the process they name.
  if (environmentOf(pid, "GIO_LAUNCHED_DESKTOP_FILE_PID") == std::to_string(pid)) {
    evidence.launchedEntry = environmentOf(pid, "GIO_LAUNCHED_DESKTOP_FILE").value_or("");
  }
  return evidence;
}

/// Whether a process without windows was started for our own display, as far as its environment
/// says: a user may be logged in to several desktops, and /proc lists the processes of all.
bool isOfThisDisplay(Pid pid) {
  const auto theirs = environmentOf(pid, "DISPLAY");
  const char* ours = std::getenv("DISPLAY");
  return !theirs || ours == nullptr || x11::isSameDisplay(*theirs, ours);
}

/// Whether a desktop entry has started a process for this display.
bool wasLaunchedHere(const std::vector<DesktopEntry>& entries, Pid pid, Pid parent) {
  return recordedEntry(entries, launchEvidence(pid, parent)) != nullptr && isOfThisDisplay(pid);
}

bool ownsMoreThanSplash(Pid pid, const x11::Windows& windows) {
  return std::any_of(windows.frontToBack.begin(), windows.frontToBack.end(),
                     [pid](const x11::Window& window) {
                       return window.managed && !window.isSplash() && window.pid == pid;
                     });
}

/// The entry whose launch is recorded for a process above that has no window. It counts as long as
/// that process lives: it waits for the program that it has started.
std::string inheritedEntry(Pid pid, const x11::Windows& windows) {
  const std::string recorded = environmentOf(pid, "GIO_LAUNCHED_DESKTOP_FILE_PID").value_or("");
  Pid above = pid;
  for (int depth = 0; depth < kMaxWrappers && above > 1; ++depth) {
    const auto status = processStatus(above);
    above = status ? status->parent : 0;
    if (above > 1 && std::to_string(above) == recorded) {
      return ownsMoreThanSplash(above, windows)
                 ? ""
                 : environmentOf(pid, "GIO_LAUNCHED_DESKTOP_FILE").value_or("");
    }
  }
  return {};
}

ProcessEvidence evidenceOf(Pid pid, Pid parent, const x11::Windows& windows) {
  ProcessEvidence evidence = launchEvidence(pid, parent);
  evidence.program = programOf(pid).value_or("");
  evidence.commandLine = commandLineOf(pid);
  evidence.pathArguments = resolvedPaths(evidence.commandLine);
  for (const x11::Window& window : windows.frontToBack) {
    if (window.pid != pid || !window.managed) {
      continue;
    }
    evidence.ownsWindows = true;
    if (evidence.gtkApplicationId.empty()) {
      evidence.gtkApplicationId = window.gtkApplicationId;
    }
    const WindowClass named{window.instanceName, window.className};
    if (std::find(evidence.windowClasses.begin(), evidence.windowClasses.end(), named) ==
        evidence.windowClasses.end()) {
      evidence.windowClasses.push_back(named);
    }
  }
  if (evidence.ownsWindows && evidence.launchedEntry.empty()) {
    evidence.inheritedEntry = inheritedEntry(pid, windows);
  }
  return evidence;
}

ActivationPolicy policyOf(Pid pid, const x11::Windows& windows) {
  ActivationPolicy policy = ActivationPolicy::prohibited;
  for (const x11::Window& window : windows.frontToBack) {
    if (window.pid == pid && window.isOrdinary()) {
      return ActivationPolicy::regular;
    }
    if (window.pid == pid) {
      policy = ActivationPolicy::accessory;
    }
  }
  return policy;
}

std::string nameOfProgram(const std::string& path) { return path.substr(path.rfind('/') + 1); }

bool ownsManagedWindow(Pid pid, const x11::Windows& windows) {
  return std::any_of(
      windows.frontToBack.begin(), windows.frontToBack.end(),
      [pid](const x11::Window& window) { return window.managed && window.pid == pid; });
}

bool isStarting(Pid pid, const x11::Windows& windows) {
  const auto isSplash = [pid](const x11::Window& window) {
    return window.managed && window.isSplash() && window.pid == pid;
  };
  return std::any_of(windows.frontToBack.begin(), windows.frontToBack.end(), isSplash) &&
         !ownsMoreThanSplash(pid, windows);
}

bool ownsOrdinaryWindow(Pid pid, const x11::Windows& windows) {
  return std::any_of(windows.frontToBack.begin(), windows.frontToBack.end(),
                     [pid](const x11::Window& window) {
                       return window.isOrdinary() && !window.isSplash() && window.pid == pid;
                     });
}

}  // namespace

bool isAlive(const ApplicationId& application) {
  const auto status = processStatus(application.pid);
  return status && !status->zombie && status->startTicks == application.instance;
}

x11::Windows Applications::windows() { return x11::readWindows(display_); }

RunningApplication Applications::describe(Pid pid, std::uint64_t instance,
                                          const x11::Windows& windows) {
  RunningApplication application;
  application.id = {pid, instance};
  application.policy = policyOf(pid, windows);
  const auto status = processStatus(pid);
  const ProcessEvidence evidence = evidenceOf(pid, status ? status->parent : 0, windows);
  const Entries entries = entries_.entries();
  if (const DesktopEntry* entry = matchingEntry(*entries, evidence)) {
    application.bundleId = entry->id;
    application.bundlePath = entry->path;
    application.localizedName = entry->name;
  } else {
    application.localizedName = nameOfProgram(evidence.program);
  }
  if (application.localizedName->empty()) {
    application.localizedName.reset();
  }
  return application;
}

std::vector<RunningApplication> Applications::running() { return running(windows()); }

std::vector<RunningApplication> Applications::running(const x11::Windows& now) {
  using Process = std::pair<std::uint64_t, Pid>;  // Sorts by the time of the start.
  std::set<Process> withWindows;
  for (const x11::Window& window : now.frontToBack) {
    const auto status = window.managed ? processStatus(window.pid) : std::nullopt;
    if (status && !status->zombie) {
      withWindows.emplace(status->startTicks, window.pid);
    }
  }
  std::set<Process> withoutWindows;
  const Entries entries = entries_.entries();
  for (const Pid pid : ownProcesses()) {
    const auto status = processStatus(pid);
    if (status && !status->zombie && !withWindows.contains({status->startTicks, pid}) &&
        wasLaunchedHere(*entries, pid, status->parent)) {
      withoutWindows.emplace(status->startTicks, pid);
    }
  }
  std::vector<RunningApplication> applications;
  for (const std::set<Process>* group : {&withWindows, &withoutWindows}) {
    for (const auto& [start, pid] : *group) {
      applications.push_back(describe(pid, start, now));
    }
  }
  return applications;
}

std::vector<RunningApplication> Applications::runningOf(std::string_view entryId) {
  const x11::Windows now = windows();
  std::vector<RunningApplication> applications = running(now);
  const Entries entries = entries_.entries();
  const FoundEntry entry = entries_.byId(entryId);
  std::erase_if(applications, [&](RunningApplication& application) {
    if (isStarting(application.id.pid, now)) {
      return true;
    }
    if (application.bundleId == entryId) {
      return false;
    }
    const auto status = processStatus(application.id.pid);
    if (entry == nullptr || !status ||
        !belongsTo(*entries, evidenceOf(application.id.pid, status->parent, now), entryId)) {
      return true;
    }
    application.bundleId = entry->id;
    application.bundlePath = entry->path;
    application.localizedName = entry->name;
    return false;
  });
  std::stable_partition(applications.begin(), applications.end(),
                        [&now](const RunningApplication& application) {
                          return ownsOrdinaryWindow(application.id.pid, now);
                        });
  return applications;
}

std::optional<Pid> Applications::startingOf(std::string_view entryId) {
  const x11::Windows now = windows();
  for (const RunningApplication& application : running(now)) {
    if (application.bundleId == entryId && isStarting(application.id.pid, now)) {
      return application.id.pid;
    }
  }
  return std::nullopt;
}

std::optional<RunningApplication> Applications::running(Pid pid) {
  const auto status = processStatus(pid);
  if (!status || status->zombie) {
    return std::nullopt;
  }
  const x11::Windows now = windows();
  if (!ownsManagedWindow(pid, now) && !wasLaunchedHere(*entries_.entries(), pid, status->parent)) {
    return std::nullopt;
  }
  return describe(pid, status->startTicks, now);
}

FoundEntry Applications::entryOf(Pid pid) {
  const auto status = processStatus(pid);
  if (!status) {
    return nullptr;
  }
  const Entries entries = entries_.entries();
  return {entries, matchingEntry(*entries, evidenceOf(pid, status->parent, windows()))};
}

std::string Applications::nameOf(Pid pid, const x11::Windows& windows) {
  const auto status = processStatus(pid);
  if (!status) {
    return {};
  }
  Known& known = names_[pid];
  if (known.instance != status->startTicks) {
    known = {status->startTicks,
             describe(pid, status->startTicks, windows).localizedName.value_or("")};
  }
  return known.name;
}

}  // namespace tarqo::lnx::apps
