// The desktop entries installed on this machine, kept up to date with the folders they lie in.
//
// One object belongs to one thread. Reads the file system; never waits.
#pragma once

#include <sys/stat.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/clock.h"
#include "platform/linux/apps/desktop_entry.h"

namespace tarqo::lnx::apps {

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
/// are followed, no folder is read twice, and no more than 5 levels or 200 folders are read: a link
/// may lead to a whole disk.
[[nodiscard]] EntryListing listEntries(const std::string& folder);

/// The entries as read at one time, in the order of their ids: a snapshot that stays valid whatever
/// is installed or removed later.
using Entries = std::shared_ptr<const std::vector<DesktopEntry>>;

/// One of those, which keeps them all; null when no entry was found.
using FoundEntry = std::shared_ptr<const DesktopEntry>;

class DesktopEntries {
 public:
  /// `clock` is kept by reference and outlives this.
  explicit DesktopEntries(Clock& clock) : clock_(clock) {}
  DesktopEntries(const DesktopEntries&) = delete;
  DesktopEntries& operator=(const DesktopEntries&) = delete;

  /// The entries in force, one for each id. Entries marked Hidden=true are left out. Read again
  /// when a folder has changed; folders are checked at most every 20 ms.
  [[nodiscard]] Entries entries();

  /// The entry in force for an id; null when the id has no entry.
  [[nodiscard]] FoundEntry byId(std::string_view id);

  /// The entry in a file; null when the file holds none, or another file overrules it.
  [[nodiscard]] FoundEntry byPath(const std::string& path);

 private:
  struct Folder {
    std::string path;
    std::optional<timespec> changed;  ///< Absent while the folder is missing.
  };

  [[nodiscard]] bool upToDate();
  void read();

  Clock& clock_;
  std::vector<Folder> folders_;
  Instant checkedAt_ = kDistantPast;
  Entries entries_;
  std::unordered_map<std::string_view, const DesktopEntry*> byPath_;  ///< Both in `entries_`.
};

}  // namespace tarqo::lnx::apps
