// The running applications, put together from the window list, /proc and the desktop entries.
//
// One object belongs to one thread. Queries the X server and reads the file system, never an
// application.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/clock.h"
#include "platform/linux/apps/desktop_entries.h"
#include "platform/linux/apps/process_to_entry.h"
#include "platform/linux/x11/window_reader.h"
#include "platform/workspace.h"

namespace tarqo::lnx::apps {

class Applications {
 public:
  /// `display` and `clock` are kept by reference and outlive this.
  Applications(x11::Display& display, Clock& clock) : display_(display), entries_(clock) {}

  [[nodiscard]] x11::Display& display() { return display_; }
  [[nodiscard]] DesktopEntries& entries() { return entries_; }

  /// The windows now; empty when there is no display.
  [[nodiscard]] x11::Windows windows();

  /// Every process that owns a window a window manager knows, in the order in which they were
  /// started, and after them those without one that a desktop entry has started on this display.
  [[nodiscard]] std::vector<RunningApplication> running();

  /// One of those; nullopt when the process is not an application.
  [[nodiscard]] std::optional<RunningApplication> running(Pid pid);

  /// The running applications of a desktop entry, each described as that entry's: those that own
  /// ordinary windows first, since a script or a launcher may be waiting behind them. One process
  /// may be of several entries. A process that shows nothing but a splash screen is left out: its
  /// application will run, often as another process.
  [[nodiscard]] std::vector<RunningApplication> runningOf(std::string_view entryId);

  /// A process of a desktop entry that shows nothing but a splash screen.
  [[nodiscard]] std::optional<Pid> startingOf(std::string_view entryId);

  /// The desktop entry that a process belongs to; null when no entry fits. The process need not be
  /// an application: a program run from a shell has the entry of its program too.
  [[nodiscard]] FoundEntry entryOf(Pid pid);

  /// The name a user knows the process by: its application's, else its program's. Empty when the
  /// process is gone. Remembered for the life of the process.
  [[nodiscard]] std::string nameOf(Pid pid, const x11::Windows& windows);

 private:
  struct Known {
    std::uint64_t instance = 0;
    std::string name;
  };

  /// One of `running`, with what that needed to know of the windows.
  [[nodiscard]] std::vector<RunningApplication> running(const x11::Windows& windows);
  [[nodiscard]] RunningApplication describe(Pid pid, std::uint64_t instance,
                                            const x11::Windows& windows);

  x11::Display& display_;
  DesktopEntries entries_;
  std::unordered_map<Pid, Known> names_;
};

/// Whether the process is the one meant, and runs.
[[nodiscard]] bool isAlive(const ApplicationId& application);

}  // namespace tarqo::lnx::apps
