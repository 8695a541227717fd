// Which desktop entry a process belongs to, by the traces that launching one leaves. Pure
// functions.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/apps/desktop_entry.h"

namespace tarqo::lnx::apps {

/// The WM_CLASS of a window.
struct WindowClass {
  std::string instanceName;
  std::string className;

  bool operator==(const WindowClass&) const = default;
};

/// What is known of a process. Empty fields are unknown.
struct ProcessEvidence {
  std::string program;                   ///< Links resolved.
  std::vector<std::string> commandLine;  ///< The program's name first.
  /// The first arguments that are absolute paths, links resolved: an interpreter's script is there.
  std::vector<std::string> pathArguments;
  std::string controlGroup;
  bool leadsControlGroup = false;  ///< Its parent is in another one.
  std::string launchedEntry;       ///< The entry's path, as its launcher recorded it.
  /// The same, recorded for a process above this one that has no window of its own: a script that
  /// starts the program, or a launcher that shows no more than a splash screen.
  std::string inheritedEntry;
  bool ownsWindows = false;
  std::string gtkApplicationId;
  std::vector<WindowClass> windowClasses;  ///< Of all its windows, front to back.
};

/// The ids of entries that a control group may be named after, the likeliest first:
/// "app-gnome-org.example.Notes-1234.scope" gives "org.example.Notes", "gnome".
[[nodiscard]] std::vector<std::string> entryIdsOfControlGroup(std::string_view controlGroup);

/// The one of `entries` that started the process, by the record of a desktop environment or the
/// system: that identifies an application even before it shows a window. Null when no launch is
/// recorded.
[[nodiscard]] const DesktopEntry* recordedEntry(const std::vector<DesktopEntry>& entries,
                                                const ProcessEvidence& evidence);

/// The one of `entries` that a process belongs to, by any evidence, the strongest first; null when
/// no entry fits.
[[nodiscard]] const DesktopEntry* matchingEntry(const std::vector<DesktopEntry>& entries,
                                                const ProcessEvidence& evidence);

/// Whether a process belongs to that one of `entries`, be it beside others: one process of an
/// office program shows the windows of all its entries.
[[nodiscard]] bool belongsTo(const std::vector<DesktopEntry>& entries,
                             const ProcessEvidence& evidence, std::string_view entryId);

}  // namespace tarqo::lnx::apps
