// The desktop entries installed on this machine, kept up to date with the folders they lie in.
//
// One index belongs to one thread. Reads the file system; waits for nothing.
#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/linux_desktop_entry.h"

namespace tarqo::lnx {

/// The folders of entries: those of the system in reverse order of preference, then the user's own,
/// so that later ones overrule earlier ones. By XDG_DATA_DIRS and XDG_DATA_HOME.
[[nodiscard]] std::vector<std::string> entryFolders();

/// The names of the entry files in a folder, sorted; empty when it cannot be listed.
[[nodiscard]] std::vector<std::string> entryFilesIn(const std::string& folder);

/// The program for a name or a path, as a launch would find it, links resolved; empty if there is
/// none. By PATH.
[[nodiscard]] std::string resolvedProgram(const std::string& program);

class EntryIndex {
 public:
  /// The entries in force, one for each id, in the order of their ids. An entry that its user has
  /// deleted is none. Read again when a folder has changed; references are valid until then.
  [[nodiscard]] const std::vector<DesktopEntry>& entries();

  /// The entry in force for an id; null when there is none.
  [[nodiscard]] const DesktopEntry* byId(std::string_view id);

  /// The entry in a file; null when there is none there or another one overrules it.
  [[nodiscard]] const DesktopEntry* byPath(const std::string& path);

 private:
  struct Folder {
    std::string path;
    std::optional<timespec> changed;  ///< None while the folder is missing.
  };

  [[nodiscard]] bool upToDate() const;
  void read();

  std::vector<Folder> folders_;
  std::vector<DesktopEntry> entries_;
};

}  // namespace tarqo::lnx
