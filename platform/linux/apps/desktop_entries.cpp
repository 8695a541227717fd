#include "platform/linux/apps/desktop_entries.h"

#include <dirent.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>
#include <set>
#include <utility>

#include "platform/linux/base/proc.h"
#include "platform/linux/base/spawn.h"

namespace tarqo::lnx::apps {
namespace {

constexpr int kMaxFolderDepth = 5;
constexpr std::size_t kMaxFolders = 200;

/// Listing applications makes thousands of lookups, and there may be hundreds of folders.
constexpr std::chrono::milliseconds kCheckInterval{20};

std::string variable(const char* name, const std::string& fallback) {
  const char* value = std::getenv(name);
  return value != nullptr && *value != '\0' ? std::string(value) : fallback;
}

std::string joined(const std::string& folder, const std::string& name) {
  std::string path = folder;
  return path.append("/").append(name);
}

/// The names to look translations up by, of all languages the user accepts.
std::vector<std::string> userLocales() {
  std::string locale;
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    locale = variable(name, "");
    if (!locale.empty()) {
      break;
    }
  }
  std::vector<std::string> names = localeNames(locale);
  if (names.empty()) {
    return names;  // The plain locale has no translations, whatever languages are accepted.
  }
  std::vector<std::string> preferred;
  for (const std::string& language : splitList(variable("LANGUAGE", ""), ':')) {
    const auto more = localeNames(language);
    preferred.insert(preferred.end(), more.begin(), more.end());
  }
  preferred.insert(preferred.end(), names.begin(), names.end());
  return preferred;
}

std::optional<timespec> changeTime(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) {
    return std::nullopt;
  }
  return status.st_mtim;
}

void completeForThisMachine(DesktopEntry& entry, const std::vector<std::string>& desktops) {
  entry.command = commandOf(entry);
  if (!entry.command.empty()) {
    entry.program = resolvedProgram(entry.command[programPosition(entry.command)]);
  }
  const bool wanted = entry.tryExec.empty() || !resolvedProgram(entry.tryExec).empty();
  // A program that runs in a terminal has no window but the terminal's.
  entry.launchable = !entry.hidden && !entry.noDisplay && !entry.terminal && wanted &&
                     !entry.program.empty() && isShownIn(entry, desktops);
}

/// A folder below a folder of entries, by its relative path.
struct Subfolder {
  std::string path;
  int depth = 0;
};

/// The names in one folder, sorted.
struct Contents {
  std::vector<std::string> files;
  std::vector<std::string> subfolders;
};

bool isFolder(DIR* parent, const dirent& entry) {
  if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN) {
    return entry.d_type == DT_DIR;
  }
  struct stat status {};
  return ::fstatat(::dirfd(parent), entry.d_name, &status, 0) == 0 && S_ISDIR(status.st_mode);
}

Contents contentsOf(DIR* folder) {
  Contents contents;
  while (const dirent* entry = ::readdir(folder)) {
    const std::string_view name(entry->d_name);
    if (isEntryFile(name)) {
      contents.files.emplace_back(name);
    } else if (name != "." && name != ".." && isFolder(folder, *entry)) {
      contents.subfolders.emplace_back(name);
    }
  }
  std::sort(contents.files.begin(), contents.files.end());
  std::sort(contents.subfolders.begin(), contents.subfolders.end());
  return contents;
}

std::string below(const std::string& folder, const std::string& name) {
  return folder.empty() ? name : joined(folder, name);
}

}  // namespace

std::vector<std::string> entryFolders() {
  const std::string home = variable("HOME", "");
  std::vector<std::string> bases;
  for (const std::string& base :
       splitList(variable("XDG_DATA_DIRS", "/usr/local/share:/usr/share"), ':')) {
    if (std::find(bases.begin(), bases.end(), base) == bases.end()) {
      bases.push_back(base);
    }
  }
  std::reverse(bases.begin(), bases.end());
  const std::string own = variable("XDG_DATA_HOME", home.empty() ? "" : home + "/.local/share");
  std::erase(bases, own);
  bases.push_back(own);
  std::vector<std::string> folders;
  for (std::string base : bases) {
    while (base.size() > 1 && base.ends_with('/')) {
      base.pop_back();
    }
    if (base.starts_with('/')) {
      folders.push_back(base + "/applications");
    }
  }
  return folders;
}

EntryListing listEntries(const std::string& folder) {
  EntryListing listing;
  std::vector<Subfolder> pending{{"", 0}};
  std::set<std::pair<dev_t, ino_t>> seen;
  for (std::size_t next = 0; next < pending.size() && next < kMaxFolders; ++next) {
    const Subfolder current = pending[next];
    const std::unique_ptr<DIR, int (*)(DIR*)> open(::opendir(joined(folder, current.path).c_str()),
                                                   &::closedir);
    struct stat status {};
    if (!open || ::fstat(::dirfd(open.get()), &status) != 0 ||
        !seen.emplace(status.st_dev, status.st_ino).second) {
      continue;
    }
    if (!current.path.empty()) {
      listing.subfolders.push_back(current.path);
    }
    Contents contents = contentsOf(open.get());
    for (const std::string& file : contents.files) {
      listing.files.push_back(below(current.path, file));
    }
    for (const std::string& subfolder : contents.subfolders) {
      if (current.depth < kMaxFolderDepth) {
        pending.push_back({below(current.path, subfolder), current.depth + 1});
      }
    }
  }
  return listing;
}

bool DesktopEntries::upToDate() {
  if (folders_.empty()) {
    return false;
  }
  const Instant now = clock_.now();
  if (now - checkedAt_ < kCheckInterval) {
    return true;
  }
  checkedAt_ = now;
  return std::all_of(folders_.begin(), folders_.end(), [](const Folder& folder) {
    const auto changed = changeTime(folder.path);
    if (!changed || !folder.changed) {
      return changed.has_value() == folder.changed.has_value();
    }
    return changed->tv_sec == folder.changed->tv_sec && changed->tv_nsec == folder.changed->tv_nsec;
  });
}

void DesktopEntries::read() {
  const Instant now = clock_.now();
  const auto locales = userLocales();
  const auto desktops = splitList(variable("XDG_CURRENT_DESKTOP", ""), ':');
  std::vector<Folder> folders;
  std::map<std::string, DesktopEntry> byId;
  for (const std::string& folder : entryFolders()) {
    folders.push_back({folder, changeTime(folder)});
    const EntryListing listing = listEntries(folder);
    for (const std::string& subfolder : listing.subfolders) {
      const std::string path = joined(folder, subfolder);
      folders.push_back({path, changeTime(path)});
    }
    // Backwards, so that of two files with the same id the one less deep is in force.
    for (auto file = listing.files.rbegin(); file != listing.files.rend(); ++file) {
      const std::string path = joined(folder, *file);
      const auto text = readWholeFile(path);
      auto entry = text ? parseDesktopEntry(*text, path, locales) : std::nullopt;
      if (entry) {
        entry->id = entryIdOf(*file);
        std::string id = entry->id;
        byId.insert_or_assign(std::move(id), std::move(*entry));
      }
    }
  }
  std::vector<DesktopEntry> entries;
  for (auto& [id, entry] : byId) {
    if (!entry.hidden) {
      completeForThisMachine(entry, desktops);
      entries.push_back(std::move(entry));
    }
  }
  const auto all = std::make_shared<const std::vector<DesktopEntry>>(std::move(entries));
  std::unordered_map<std::string_view, const DesktopEntry*> byPath;
  for (const DesktopEntry& entry : *all) {
    byPath.emplace(entry.path, &entry);
  }
  entries_ = all;
  byPath_ = std::move(byPath);
  folders_ = std::move(folders);
  checkedAt_ = now;
}

Entries DesktopEntries::entries() {
  if (!upToDate()) {
    read();
  }
  return entries_;
}

FoundEntry DesktopEntries::byId(std::string_view id) {
  const Entries all = entries();
  const auto found = std::lower_bound(
      all->begin(), all->end(), id,
      [](const DesktopEntry& entry, std::string_view wanted) { return entry.id < wanted; });
  return found != all->end() && found->id == id ? FoundEntry(all, &*found) : nullptr;
}

FoundEntry DesktopEntries::byPath(const std::string& path) {
  const Entries all = entries();
  const auto found = byPath_.find(path);
  return found != byPath_.end() ? FoundEntry(all, found->second) : nullptr;
}

}  // namespace tarqo::lnx::apps
