#include "platform/linux/linux_entry_index.h"

#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>
#include <memory>
#include <utility>

#include "platform/linux/linux_proc.h"

namespace tarqo::lnx {
namespace {

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

bool isProgram(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         ::access(path.c_str(), X_OK) == 0;
}

std::string withLinksResolved(const std::string& path) {
  const std::unique_ptr<char, void (*)(void*)> real(::realpath(path.c_str(), nullptr), &std::free);
  return real ? std::string(real.get()) : path;
}

void completeForThisMachine(DesktopEntry& entry, const std::vector<std::string>& desktops) {
  entry.command = commandOf(entry);
  if (!entry.command.empty()) {
    entry.program = resolvedProgram(entry.command[programPosition(entry.command)]);
  }
  const bool wanted = entry.tryExec.empty() || !resolvedProgram(entry.tryExec).empty();
  // What runs in a terminal shows the terminal's window and none of its own.
  entry.launchable = !entry.hidden && !entry.noDisplay && !entry.terminal && wanted &&
                     !entry.program.empty() && isShownIn(entry, desktops);
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

std::vector<std::string> entryFilesIn(const std::string& folder) {
  std::vector<std::string> names;
  const std::unique_ptr<DIR, int (*)(DIR*)> open(::opendir(folder.c_str()), &::closedir);
  if (!open) {
    return names;
  }
  while (const dirent* entry = ::readdir(open.get())) {
    const std::string_view name(entry->d_name);
    if (name.ends_with(".desktop")) {
      names.emplace_back(name);
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string resolvedProgram(const std::string& program) {
  if (program.find('/') != std::string::npos) {
    return isProgram(program) ? withLinksResolved(program) : std::string();
  }
  for (const std::string& folder : splitList(variable("PATH", "/usr/bin:/bin"), ':')) {
    const std::string path = joined(folder, program);
    if (isProgram(path)) {
      return withLinksResolved(path);
    }
  }
  return {};
}

bool EntryIndex::upToDate() const {
  if (folders_.empty()) {
    return false;
  }
  return std::all_of(folders_.begin(), folders_.end(), [](const Folder& folder) {
    const auto now = changeTime(folder.path);
    if (!now || !folder.changed) {
      return now.has_value() == folder.changed.has_value();
    }
    return now->tv_sec == folder.changed->tv_sec && now->tv_nsec == folder.changed->tv_nsec;
  });
}

void EntryIndex::read() {
  folders_.clear();
  entries_.clear();
  const auto locales = userLocales();
  const auto desktops = splitList(variable("XDG_CURRENT_DESKTOP", ""), ':');
  std::map<std::string, DesktopEntry> byId;
  for (const std::string& folder : entryFolders()) {
    folders_.push_back({folder, changeTime(folder)});
    for (const std::string& file : entryFilesIn(folder)) {
      const std::string path = joined(folder, file);
      const auto text = readWholeFile(path);
      auto entry = text ? parseDesktopEntry(*text, path, locales) : std::nullopt;
      if (entry) {
        std::string id = entry->id;
        byId.insert_or_assign(std::move(id), std::move(*entry));
      }
    }
  }
  for (auto& [id, entry] : byId) {
    if (!entry.hidden) {
      completeForThisMachine(entry, desktops);
      entries_.push_back(std::move(entry));
    }
  }
}

const std::vector<DesktopEntry>& EntryIndex::entries() {
  if (!upToDate()) {
    read();
  }
  return entries_;
}

const DesktopEntry* EntryIndex::byId(std::string_view id) {
  const auto& all = entries();
  const auto found = std::lower_bound(
      all.begin(), all.end(), id,
      [](const DesktopEntry& entry, std::string_view wanted) { return entry.id < wanted; });
  return found != all.end() && found->id == id ? &*found : nullptr;
}

const DesktopEntry* EntryIndex::byPath(const std::string& path) {
  const auto& all = entries();
  const auto found = std::find_if(
      all.begin(), all.end(), [&path](const DesktopEntry& entry) { return entry.path == path; });
  return found != all.end() ? &*found : nullptr;
}

}  // namespace tarqo::lnx
