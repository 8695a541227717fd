// Desktop entries: the files that describe installed applications. Pure functions.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarqo::lnx::apps {

struct DesktopEntry {
  std::string id;    ///< `entryIdOf` its file. `parseDesktopEntry` does not know the folder of
                     ///< entries, and uses the file's name alone; `DesktopEntries` corrects it.
  std::string path;  ///< Absolute.
  std::string name;  ///< In the user's language where the entry has it.
  std::string icon;
  std::string exec;  ///< As it stands in the file, unescaped: with quotes and field codes.
  std::string tryExec;
  std::string folder;  ///< To be the working folder; empty when the entry names no folder.
  std::string windowClass;
  std::vector<std::string> onlyShowIn;
  std::vector<std::string> notShowIn;
  bool hidden = false;
  bool noDisplay = false;
  bool terminal = false;

  /// What follows from the entry on this machine; set by `DesktopEntries`.
  std::vector<std::string> command;  ///< `commandOf`.
  std::string program;      ///< The program of the command, links resolved; empty if missing.
  bool launchable = false;  ///< A user may launch it and then see windows of it.
};

/// Whether a file of that name can be an entry.
[[nodiscard]] bool isEntryFile(std::string_view name);

/// The id of an entry by the place of its file below the folder of entries: "wine/Notes.desktop"
/// gives "wine-Notes". The path must be one of an entry file.
[[nodiscard]] std::string entryIdOf(std::string_view relativePath);

/// The names under which translations of a user's language stand in entries, best first. Takes the
/// value of a locale variable: "ko_KR.UTF-8@x" gives "ko_KR@x", "ko_KR", "ko@x", "ko".
[[nodiscard]] std::vector<std::string> localeNames(std::string_view locale);

/// The application entry in the text of a file; nullopt when the file is not the entry of an
/// application. The field of a missing key keeps its initial value.
[[nodiscard]] std::optional<DesktopEntry> parseDesktopEntry(
    std::string_view text, const std::string& path, const std::vector<std::string>& locales);

/// The program of an entry with its arguments, opening no file: quotes taken off, field codes
/// filled in or left out. Empty when the entry has no program or its quotes do not match.
[[nodiscard]] std::vector<std::string> commandOf(const DesktopEntry& entry);

/// Where in a command its program stands: behind an "env", its options and the variables it sets.
[[nodiscard]] std::size_t programPosition(const std::vector<std::string>& command);

/// Whether an entry is for display in a desktop; `currentDesktops` is the list of its names, as
/// XDG_CURRENT_DESKTOP holds it.
[[nodiscard]] bool isShownIn(const DesktopEntry& entry,
                             const std::vector<std::string>& currentDesktops);

/// The parts of a text between separators, without empty parts.
[[nodiscard]] std::vector<std::string> splitList(std::string_view text, char separator);

}  // namespace tarqo::lnx::apps
