#include "platform/linux/apps/desktop_entry.h"

#include <algorithm>
#include <map>
#include <utility>

namespace tarqo::lnx::apps {
namespace {

constexpr std::string_view kSuffix = ".desktop";

using Keys = std::map<std::string, std::string, std::less<>>;

std::string_view trimmedBlanks(std::string_view text) {
  const std::size_t begin = std::min(text.find_first_not_of(" \t\r"), text.size());
  text.remove_prefix(begin);
  return text.substr(0, text.find_last_not_of(" \t\r") + 1);
}

/// The keys of the group "Desktop Entry" with their raw values.
Keys readKeys(std::string_view text) {
  Keys keys;
  bool inGroup = false;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = trimmedBlanks(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.starts_with('[')) {
      inGroup = line == "[Desktop Entry]";
      continue;
    }
    const std::size_t equals = line.find('=');
    if (inGroup && !line.starts_with('#') && equals != std::string_view::npos) {
      keys.emplace(trimmedBlanks(line.substr(0, equals)), trimmedBlanks(line.substr(equals + 1)));
    }
  }
  return keys;
}

std::string unescaped(std::string_view value) {
  std::string text;
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (value[i] != '\\' || i + 1 == value.size()) {
      text += value[i];
      continue;
    }
    ++i;
    switch (value[i]) {
      case 's':
        text += ' ';
        break;
      case 'n':
        text += '\n';
        break;
      case 't':
        text += '\t';
        break;
      case 'r':
        text += '\r';
        break;
      case '\\':
        text += '\\';
        break;
      default:  // Not ours: Exec has escapes of its own inside quotes.
        text += '\\';
        text += value[i];
        break;
    }
  }
  return text;
}

std::string valueOf(const Keys& keys, std::string_view key) {
  const auto found = keys.find(key);
  return found != keys.end() ? unescaped(found->second) : std::string();
}

bool flagOf(const Keys& keys, std::string_view key) { return valueOf(keys, key) == "true"; }

std::string localizedValueOf(const Keys& keys, std::string_view key,
                             const std::vector<std::string>& locales) {
  for (const std::string& locale : locales) {
    std::string value = valueOf(keys, std::string(key) + "[" + locale + "]");
    if (!value.empty()) {
      return value;
    }
  }
  return valueOf(keys, key);
}

struct Word {
  std::string text;
  bool quoted = false;
};

/// Whether a backslash escapes the character behind it, as in a shell: any character outside
/// quotes, a few in double quotes, no character in single quotes.
bool isEscape(char quote, char next) {
  constexpr std::string_view kEscapedInQuotes = "\"`$\\\n";
  return quote == 0 || (quote == '"' && kEscapedInQuotes.find(next) != std::string_view::npos);
}

/// The words of an Exec line, split as desktops do: like a shell, which goes beyond what the format
/// of entries allows, and Wine for one relies on it. Empty when a quote is left open.
std::vector<Word> wordsOf(std::string_view line) {
  std::vector<Word> words;
  bool inWord = false;
  char quote = 0;  // The one that is open; 0 outside.
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    if (quote == 0 && (c == ' ' || c == '\t' || c == '\n')) {
      inWord = false;
      continue;
    }
    if (!inWord) {
      words.emplace_back();
      inWord = true;
    }
    if (c == '\\' && i + 1 < line.size() && isEscape(quote, line[i + 1])) {
      words.back().text += line[++i];
    } else if (quote != 0 ? c == quote : c == '"' || c == '\'') {
      quote = quote != 0 ? '\0' : c;
      words.back().quoted = true;
    } else {
      words.back().text += c;
    }
  }
  return quote != 0 ? std::vector<Word>() : words;
}

/// How many words an option of "env" takes up; 0 for a word that is not an option.
std::size_t lengthOfEnvOption(const std::string& word) {
  if (word.size() < 2 || word[0] != '-') {
    return word == "-" ? 1 : 0;
  }
  if (word[1] == '-') {
    return word == "--unset" || word == "--chdir" ? 2 : 1;
  }
  // Of several letters in a word, the first that takes a value takes the rest of the word, or the
  // next word when nothing is left.
  const std::size_t letter = word.find_first_of("uC", 1);
  return letter != std::string::npos && letter + 1 == word.size() ? 2 : 1;
}

/// A word with its field codes filled in; codes that stand for files, and those out of use, are
/// filled in with nothing.
std::string expanded(const std::string& word, const DesktopEntry& entry) {
  std::string text;
  for (std::size_t i = 0; i < word.size(); ++i) {
    if (word[i] != '%' || i + 1 == word.size()) {
      text += word[i];
      continue;
    }
    ++i;
    if (word[i] == '%') {
      text += '%';
    } else if (word[i] == 'c') {
      text += entry.name;
    } else if (word[i] == 'k') {
      text += entry.path;
    }
  }
  return text;
}

bool intersect(const std::vector<std::string>& some, const std::vector<std::string>& others) {
  return std::find_first_of(some.begin(), some.end(), others.begin(), others.end()) != some.end();
}

}  // namespace

bool isEntryFile(std::string_view name) {
  return name.ends_with(kSuffix) && name.size() > kSuffix.size();
}

std::vector<std::string> splitList(std::string_view text, char separator) {
  std::vector<std::string> parts;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(separator), text.size());
    if (end > 0) {
      parts.emplace_back(text.substr(0, end));
    }
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return parts;
}

std::string entryIdOf(std::string_view relativePath) {
  std::string id(relativePath.substr(0, relativePath.size() - kSuffix.size()));
  std::replace(id.begin(), id.end(), '/', '-');
  return id;
}

std::vector<std::string> localeNames(std::string_view locale) {
  const std::size_t at = locale.find('@');
  const std::string modifier(at == std::string_view::npos ? "" : locale.substr(at));
  std::string_view base = locale.substr(0, at);
  base = base.substr(0, base.find('.'));
  const std::size_t underscore = base.find('_');
  const std::string language(base.substr(0, underscore));
  if (language.empty() || language == "C" || language == "POSIX") {
    return {};
  }
  std::vector<std::string> names;
  if (underscore != std::string_view::npos) {
    if (!modifier.empty()) {
      names.push_back(std::string(base) + modifier);
    }
    names.emplace_back(base);
  }
  if (!modifier.empty()) {
    names.push_back(language + modifier);
  }
  names.push_back(language);
  return names;
}

std::optional<DesktopEntry> parseDesktopEntry(std::string_view text, const std::string& path,
                                              const std::vector<std::string>& locales) {
  const std::string_view file = std::string_view(path).substr(path.rfind('/') + 1);
  if (!isEntryFile(file)) {
    return std::nullopt;
  }
  const Keys keys = readKeys(text);
  DesktopEntry entry;
  entry.id = entryIdOf(file);
  entry.path = path;
  entry.hidden = flagOf(keys, "Hidden");
  // An entry that only says "this one is deleted" need not say anything else.
  if (valueOf(keys, "Type") != "Application" && !entry.hidden) {
    return std::nullopt;
  }
  entry.name = localizedValueOf(keys, "Name", locales);
  entry.icon = localizedValueOf(keys, "Icon", locales);
  entry.exec = valueOf(keys, "Exec");
  entry.tryExec = valueOf(keys, "TryExec");
  entry.folder = valueOf(keys, "Path");
  entry.windowClass = valueOf(keys, "StartupWMClass");
  entry.onlyShowIn = splitList(valueOf(keys, "OnlyShowIn"), ';');
  entry.notShowIn = splitList(valueOf(keys, "NotShowIn"), ';');
  entry.noDisplay = flagOf(keys, "NoDisplay");
  entry.terminal = flagOf(keys, "Terminal");
  return entry;
}

std::vector<std::string> commandOf(const DesktopEntry& entry) {
  std::vector<std::string> command;
  for (const Word& word : wordsOf(entry.exec)) {
    if (word.text == "%i" && !word.quoted) {
      if (!entry.icon.empty()) {
        command.insert(command.end(), {"--icon", entry.icon});
      }
      continue;
    }
    std::string text = expanded(word.text, entry);
    if (!text.empty() || (word.quoted && word.text.empty())) {
      command.push_back(std::move(text));
    }
  }
  return command;
}

std::size_t programPosition(const std::vector<std::string>& command) {
  if (command.empty() || (command[0] != "env" && !command[0].ends_with("/env"))) {
    return 0;
  }
  std::size_t position = 1;
  while (position < command.size()) {
    const std::size_t length = lengthOfEnvOption(command[position]);
    const bool isLast = length == 0 || command[position] == "--";
    position += length;
    if (isLast) {
      break;
    }
  }
  while (position < command.size() && command[position].find('=') != std::string::npos) {
    ++position;
  }
  return position < command.size() ? position : 0;
}

bool isShownIn(const DesktopEntry& entry, const std::vector<std::string>& currentDesktops) {
  if (intersect(entry.notShowIn, currentDesktops)) {
    return false;
  }
  return entry.onlyShowIn.empty() || intersect(entry.onlyShowIn, currentDesktops);
}

}  // namespace tarqo::lnx::apps
