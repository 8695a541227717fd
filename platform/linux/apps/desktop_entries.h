// The desktop entries installed on this machine, kept up to date with the folders they lie in.
//
// One index belongs to one thread. Reads the file system; waits for nothing.
#pragma once

#include <sys/stat.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/linux/apps/desktop_entry.h"

namespace tarqo::lnx {

/// The folders of entries: those of the system in reverse order of preference, then the user's own,
/// so that later ones overrule earlier ones. By XDG_DATA_DIRS and XDG_DATA_HOME.
[[nodiscard]] std::vector<std::string> entryFolders();

/// What lies in a folder of entries.
struct EntryListing {
  /// The entry files, relative to the folder: its own sorted, then those of the folders below it.
  std::vector<std::string> files;
  std::vector<std::string> subfolders;  ///< Relative paths of the folders below it that were read.
};

/// Reads a folder of entries and those below it; empty when it cannot be listed. Links to folders
/// are followed, no folder is read twice, none deeper than 5 levels, and no more than 200 in all: a
/// link may well lead to a whole disk.
[[nodiscard]] EntryListing listEntries(const std::string& folder);

/// The program for a name or a path, as a launch would find it, links resolved; empty if there is
/// none. By PATH.
[[nodiscard]] std::string resolvedProgram(const std::string& program);

/// Entries as they were read at one time, in the order of their ids. Whoever holds them keeps them,
/// whatever is installed or removed meanwhile.
using Entries = std::shared_ptr<const std::vector<DesktopEntry>>;

/// One of those; null for none.
using FoundEntry = std::shared_ptr<const DesktopEntry>;

class EntryIndex {
 public:
  EntryIndex() = default;
  EntryIndex(const EntryIndex&) = delete;
  EntryIndex& operator=(const EntryIndex&) = delete;

  /// The entries in force, one for each id. An entry that its user has deleted is none. Read again
  /// when a folder has changed, for which the folders are looked at 20 ms after the last time at
  /// the earliest.
  [[nodiscard]] Entries entries();

  /// The entry in force for an id; null when there is none.
  [[nodiscard]] FoundEntry byId(std::string_view id);

  /// The entry in a file; null when there is none there or another one overrules it.
  [[nodiscard]] FoundEntry byPath(const std::string& path);

 private:
  struct Folder {
    std::string path;
    std::optional<timespec> changed;  ///< None while the folder is missing.
  };

  [[nodiscard]] bool upToDate();
  void read();

  std::vector<Folder> folders_;
  std::chrono::steady_clock::time_point lookedAt_;
  Entries entries_;
  std::unordered_map<std::string_view, const DesktopEntry*> byPath_;  ///< Both in `entries_`.
};

}  // namespace tarqo::lnx
