#include "platform/linux/apps/process_to_entry.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstddef>
#include <optional>

namespace tarqo::lnx::apps {
namespace {

bool equalIgnoringCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](unsigned char x, unsigned char y) {
    return std::tolower(x) == std::tolower(y);
  });
}

/// The first entry that satisfies a condition. Entries that a user may launch come first, because
/// services and settings pages often share the program of an application.
template <typename Condition>
const DesktopEntry* firstWhere(const std::vector<DesktopEntry>& entries, Condition holds) {
  const DesktopEntry* found = nullptr;
  for (const DesktopEntry& entry : entries) {
    if (!entry.terminal && holds(entry)) {
      if (entry.launchable) {
        return &entry;
      }
      found = found != nullptr ? found : &entry;
    }
  }
  return found;
}

const DesktopEntry* entryOfId(const std::vector<DesktopEntry>& entries, std::string_view id) {
  return firstWhere(entries, [id](const DesktopEntry& entry) { return entry.id == id; });
}

const DesktopEntry* entryOfControlGroup(const std::vector<DesktopEntry>& entries,
                                        const ProcessEvidence& evidence) {
  for (const std::string& id : entryIdsOfControlGroup(evidence.controlGroup)) {
    if (const DesktopEntry* entry = entryOfId(entries, id)) {
      return entry;
    }
  }
  return nullptr;
}

const DesktopEntry* entryOfWindowClass(const std::vector<DesktopEntry>& entries,
                                       const WindowClass& window) {
  for (const std::string& name : {window.className, window.instanceName}) {
    if (name.empty()) {
      continue;
    }
    if (const DesktopEntry* entry = firstWhere(
            entries, [&name](const DesktopEntry& each) { return each.windowClass == name; })) {
      return entry;
    }
    if (const DesktopEntry* entry = firstWhere(entries, [&name](const DesktopEntry& each) {
          return equalIgnoringCase(each.id, name);
        })) {
      return entry;
    }
  }
  return nullptr;
}

/// That of the first window that has one: a dialog in front may be of a class of its own.
const DesktopEntry* entryOfWindowClasses(const std::vector<DesktopEntry>& entries,
                                         const ProcessEvidence& evidence) {
  for (const WindowClass& window : evidence.windowClasses) {
    if (const DesktopEntry* entry = entryOfWindowClass(entries, window)) {
      return entry;
    }
  }
  return nullptr;
}

const DesktopEntry* entryAtPath(const std::vector<DesktopEntry>& entries, const std::string& path) {
  if (path.empty()) {
    return nullptr;
  }
  return firstWhere(entries, [&path](const DesktopEntry& entry) { return entry.path == path; });
}

/// How well a command line fits an entry's command; the greater the better.
struct Fit {
  int matchedWords = 0;
  int missingOptions = 0;

  [[nodiscard]] bool isBetterThan(const Fit& other) const {
    return matchedWords != other.matchedWords ? matchedWords > other.matchedWords
                                              : missingOptions < other.missingOptions;
  }
};

std::string_view fileName(std::string_view path) { return path.substr(path.rfind('/') + 1); }

/// Whether the process was started by the command's name, even if it runs another program: an
/// interpreter of a private environment, say. Only a command that names a file is specific enough.
bool runsByName(const std::vector<std::string>& command, std::size_t program,
                const std::vector<std::string>& commandLine) {
  return !commandLine.empty() && fileName(commandLine.front()) == fileName(command[program]) &&
         std::any_of(command.begin() + static_cast<std::ptrdiff_t>(program) + 1, command.end(),
                     [](const std::string& word) { return word.starts_with('/'); });
}

/// Nullopt when another program runs, or the same one (an interpreter, say) with something else.
std::optional<Fit> fitOf(const DesktopEntry& entry, const ProcessEvidence& evidence) {
  // An entry that is not for users, a window manager's for example, has no claim to whatever runs
  // its program.
  if (!entry.launchable || entry.program.empty()) {
    return std::nullopt;
  }
  const std::size_t program = programPosition(entry.command);
  const auto& paths = evidence.pathArguments;
  if (entry.program != evidence.program &&
      std::find(paths.begin(), paths.end(), entry.program) == paths.end() &&
      !runsByName(entry.command, program, evidence.commandLine)) {
    return std::nullopt;
  }
  Fit fit;
  auto from = evidence.commandLine.begin();
  for (std::size_t i = program + 1; i < entry.command.size(); ++i) {
    const std::string& word = entry.command[i];
    const auto found = std::find(from, evidence.commandLine.end(), word);
    if (found != evidence.commandLine.end()) {
      ++fit.matchedWords;
      from = found + 1;
    } else if (word.starts_with('-')) {
      ++fit.missingOptions;
    } else {
      return std::nullopt;
    }
  }
  return fit;
}

const DesktopEntry* entryOfProgram(const std::vector<DesktopEntry>& entries,
                                   const ProcessEvidence& evidence) {
  const DesktopEntry* best = nullptr;
  Fit bestFit;
  for (const DesktopEntry& entry : entries) {
    const auto fit = fitOf(entry, evidence);
    if (fit && (best == nullptr || fit->isBetterThan(bestFit))) {
      best = &entry;
      bestFit = *fit;
    }
  }
  return best;
}

/// The name of a unit with "\x2d" and the like turned back into the characters they stand for.
std::string unescapedUnitName(std::string_view name) {
  std::string text;
  for (std::size_t i = 0; i < name.size(); ++i) {
    unsigned code = 0;
    if (name.substr(i).starts_with("\\x") && i + 4 <= name.size() &&
        std::from_chars(&name[i + 2], name.data() + i + 4, code, 16).ptr == name.data() + i + 4) {
      text += static_cast<char>(code);
      i += 3;
    } else {
      text += name[i];
    }
  }
  return text;
}

}  // namespace

std::vector<std::string> entryIdsOfControlGroup(std::string_view controlGroup) {
  constexpr std::string_view kPrefix = "app-";
  std::string_view unit = controlGroup.substr(controlGroup.rfind('/') + 1);
  const bool isScope = unit.ends_with(".scope");
  if (!unit.starts_with(kPrefix) || (!isScope && !unit.ends_with(".service"))) {
    return {};
  }
  unit = unit.substr(kPrefix.size(), unit.rfind('.') - kPrefix.size());
  // "[LAUNCHER-]ID[-RANDOM]" for a scope, "[LAUNCHER-]ID[@RANDOM]" for a service.
  std::vector<std::string> parts = splitList(unit.substr(0, unit.find('@')), '-');
  if (isScope && parts.size() > 1) {
    parts.pop_back();
  }
  std::vector<std::string> ids;
  for (auto part = parts.rbegin(); part != parts.rend(); ++part) {
    ids.push_back(unescapedUnitName(*part));
  }
  return ids;
}

const DesktopEntry* recordedEntry(const std::vector<DesktopEntry>& entries,
                                  const ProcessEvidence& evidence) {
  // Whatever an application starts, a terminal's shell for example, lies in the same group.
  if (evidence.leadsControlGroup) {
    if (const DesktopEntry* entry = entryOfControlGroup(entries, evidence)) {
      return entry;
    }
  }
  return entryAtPath(entries, evidence.launchedEntry);
}

const DesktopEntry* matchingEntry(const std::vector<DesktopEntry>& entries,
                                  const ProcessEvidence& evidence) {
  if (const DesktopEntry* entry = recordedEntry(entries, evidence)) {
    return entry;
  }
  if (const DesktopEntry* entry = entryOfId(entries, evidence.gtkApplicationId)) {
    return entry;
  }
  if (const DesktopEntry* entry = entryOfWindowClasses(entries, evidence)) {
    return entry;
  }
  if (const DesktopEntry* entry = entryOfProgram(entries, evidence)) {
    return entry;
  }
  if (const DesktopEntry* entry = entryAtPath(entries, evidence.inheritedEntry)) {
    return entry;
  }
  return evidence.ownsWindows ? entryOfControlGroup(entries, evidence) : nullptr;
}

bool belongsTo(const std::vector<DesktopEntry>& entries, const ProcessEvidence& evidence,
               std::string_view entryId) {
  const auto isMeant = [entryId](const DesktopEntry* entry) {
    return entry != nullptr && entry->id == entryId;
  };
  return isMeant(matchingEntry(entries, evidence)) ||
         isMeant(entryAtPath(entries, evidence.inheritedEntry)) ||
         std::any_of(evidence.windowClasses.begin(), evidence.windowClasses.end(),
                     [&](const WindowClass& window) {
                       return isMeant(entryOfWindowClass(entries, window));
                     });
}

}  // namespace tarqo::lnx::apps
