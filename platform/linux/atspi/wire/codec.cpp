#include "platform/linux/atspi/wire/codec.h"

#include <array>
#include <cstring>

namespace tarqo::lnx::atspi {
namespace {

constexpr std::pair<std::string_view, Interface> kInterfaces[] = {
    {"Action", Interface::action},
    {"Component", Interface::component},
    {"Collection", Interface::collection},
    {"Document", Interface::document},
    {"EditableText", Interface::editableText},
    {"Selection", Interface::selection},
    {"Table", Interface::table},
    {"Text", Interface::text},
    {"Value", Interface::value},
};

constexpr std::string_view kPrefix = "org.a11y.atspi.";

/// No text that anybody reads is longer, and an application may send 128 MB.
constexpr std::size_t kMaxTextBytes = std::size_t{64} * 1024;

/// Far more attributes and actions than an object has.
constexpr std::size_t kMaxEntries = 200;

/// A text as it is kept: cut, when it is longer, between two characters.
std::string kept(const char* text) {
  std::size_t length = strnlen(text, kMaxTextBytes + 1);
  if (length > kMaxTextBytes) {
    length = kMaxTextBytes;
    while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) {
      --length;
    }
  }
  return {text, length};
}

bool enter(sd_bus_message* m, char type, const char* contents) {
  return sd_bus_message_enter_container(m, type, contents) > 0;
}

void leave(sd_bus_message* m) { sd_bus_message_exit_container(m); }

/// Reads the inside of an open array or struct position: (so).
std::optional<Ref> readRefHere(sd_bus_message* m) {
  const char* bus = nullptr;
  const char* path = nullptr;
  if (sd_bus_message_read(m, "(so)", &bus, &path) <= 0) {
    return std::nullopt;
  }
  return Ref{bus, path};
}

std::optional<States> readStatesHere(sd_bus_message* m) {
  const void* data = nullptr;
  std::size_t bytes = 0;
  if (sd_bus_message_read_array(m, 'u', &data, &bytes) < 0) {
    return std::nullopt;
  }
  const auto* words = static_cast<const std::uint32_t*>(data);
  const std::size_t count = bytes / sizeof(std::uint32_t);
  std::uint64_t bits = count > 0 ? words[0] : 0;
  if (count > 1) {
    bits |= static_cast<std::uint64_t>(words[1]) << 32U;
  }
  return States(bits);
}

std::optional<Interfaces> readInterfacesHere(sd_bus_message* m) {
  if (!enter(m, 'a', "s")) {
    return std::nullopt;
  }
  Interfaces result;
  const char* name = nullptr;
  while (sd_bus_message_read(m, "s", &name) > 0) {
    result.add(name);
  }
  leave(m);
  return result;
}

}  // namespace

void Interfaces::add(std::string_view name) {
  if (!name.starts_with(kPrefix)) {
    return;
  }
  name.remove_prefix(kPrefix.size());
  for (const auto& [known, bit] : kInterfaces) {
    if (known == name) {
      bits_ |= static_cast<unsigned>(bit);
    }
  }
}

std::optional<std::string> readText(sd_bus_message* m) {
  const char* text = nullptr;
  if (sd_bus_message_read(m, "s", &text) <= 0) {
    return std::nullopt;
  }
  return kept(text);
}

std::optional<std::uint32_t> readNumber(sd_bus_message* m) {
  std::uint32_t number = 0;
  if (sd_bus_message_read(m, "u", &number) <= 0) {
    return std::nullopt;
  }
  return number;
}

std::optional<bool> readBool(sd_bus_message* m) {
  int truth = 0;
  if (sd_bus_message_read(m, "b", &truth) <= 0) {
    return std::nullopt;
  }
  return truth != 0;
}

std::optional<Ref> readRef(sd_bus_message* m) { return readRefHere(m); }

std::optional<std::vector<Ref>> readRefs(sd_bus_message* m) {
  if (!enter(m, 'a', "(so)")) {
    return std::nullopt;
  }
  std::vector<Ref> result;
  while (std::optional<Ref> ref = readRefHere(m)) {
    if (!ref->empty()) {
      result.push_back(*std::move(ref));
    }
  }
  leave(m);
  return result;
}

std::optional<States> readStates(sd_bus_message* m) { return readStatesHere(m); }

std::optional<Interfaces> readInterfaces(sd_bus_message* m) { return readInterfacesHere(m); }

std::optional<Attributes> readAttributes(sd_bus_message* m) {
  if (!enter(m, 'a', "{ss}")) {
    return std::nullopt;
  }
  Attributes result;
  const char* key = nullptr;
  const char* value = nullptr;
  while (sd_bus_message_read(m, "{ss}", &key, &value) > 0) {
    if (result.size() < kMaxEntries) {
      result.emplace_back(kept(key), kept(value));
    }
  }
  leave(m);
  return result;
}

std::optional<Rect> readExtents(sd_bus_message* m) {
  std::int32_t x = 0;
  std::int32_t y = 0;
  std::int32_t width = 0;
  std::int32_t height = 0;
  if (sd_bus_message_read(m, "(iiii)", &x, &y, &width, &height) <= 0) {
    return std::nullopt;
  }
  return Rect{static_cast<double>(x), static_cast<double>(y), static_cast<double>(width),
              static_cast<double>(height)};
}

std::optional<std::vector<std::string>> readActions(sd_bus_message* m) {
  if (!enter(m, 'a', "(sss)")) {
    return std::nullopt;
  }
  std::vector<std::string> result;
  const char* name = nullptr;
  const char* description = nullptr;
  const char* keys = nullptr;
  while (sd_bus_message_read(m, "(sss)", &name, &description, &keys) > 0) {
    if (result.size() < kMaxEntries) {
      result.push_back(kept(name));
    }
  }
  leave(m);
  return result;
}

std::optional<std::string> readVariantText(sd_bus_message* m) {
  if (!enter(m, 'v', "s")) {
    return std::nullopt;
  }
  return readText(m);
}

std::optional<double> readVariantDouble(sd_bus_message* m) {
  double number = 0;
  if (!enter(m, 'v', "d") || sd_bus_message_read(m, "d", &number) <= 0) {
    return std::nullopt;
  }
  return number;
}

std::optional<int> readVariantInt(sd_bus_message* m) {
  std::int32_t number = 0;
  if (!enter(m, 'v', "i") || sd_bus_message_read(m, "i", &number) <= 0) {
    return std::nullopt;
  }
  return number;
}

std::optional<Ref> readVariantRef(sd_bus_message* m) {
  if (!enter(m, 'v', "(so)")) {
    return std::nullopt;
  }
  return readRefHere(m);
}

AccessibleProperties readProperties(sd_bus_message* m) {
  AccessibleProperties result;
  if (!enter(m, 'a', "{sv}")) {
    return result;
  }
  while (enter(m, 'e', "sv")) {
    const std::string key = readText(m).value_or("");
    const char* contents = nullptr;
    char type = 0;
    if (sd_bus_message_peek_type(m, &type, &contents) <= 0 || !enter(m, 'v', contents)) {
      break;
    }
    const std::string_view held = contents;
    if (key == "Name" && held == "s") {
      result.name = readText(m);
    } else if (key == "Description" && held == "s") {
      result.description = readText(m);
    } else if (key == "AccessibleId" && held == "s") {
      result.identifier = readText(m);
    } else if (key == "Attributes" && held == "a{ss}") {
      result.attributes = readAttributes(m);
    } else if (key == "Parent" && held == "(so)") {
      result.parent = readRefHere(m);
    } else if (key == "ChildCount" && held == "i") {
      std::int32_t count = 0;
      sd_bus_message_read(m, "i", &count);
      result.childCount = count;
    } else {
      sd_bus_message_skip(m, contents);
    }
    leave(m);
    leave(m);
  }
  return result;
}

std::vector<Ref> readRelation(sd_bus_message* m, std::uint32_t type) {
  std::vector<Ref> result;
  if (!enter(m, 'a', "(ua(so))")) {
    return result;
  }
  while (enter(m, 'r', "ua(so)")) {
    const std::optional<std::uint32_t> kind = readNumber(m);
    std::optional<std::vector<Ref>> targets = readRefs(m);
    leave(m);
    if (kind == type && targets) {
      result = *std::move(targets);
    }
  }
  return result;
}

std::vector<CacheItem> readCacheItems(sd_bus_message* m) {
  std::vector<CacheItem> result;
  constexpr const char* kContents = "(so)(so)(so)iiassusau";
  if (!enter(m, 'a', "((so)(so)(so)iiassusau)")) {
    return result;
  }
  while (enter(m, 'r', kContents)) {
    CacheItem item;
    const std::optional<Ref> self = readRefHere(m);
    const std::optional<Ref> application = readRefHere(m);
    const std::optional<Ref> parent = readRefHere(m);
    std::int32_t index = -1;
    std::int32_t count = -1;
    if (!self || !application || !parent || sd_bus_message_read(m, "ii", &index, &count) <= 0) {
      break;
    }
    const std::optional<Interfaces> interfaces = readInterfacesHere(m);
    const char* name = nullptr;
    const char* description = nullptr;
    if (!interfaces || sd_bus_message_read(m, "sus", &name, &item.role, &description) <= 0) {
      break;
    }
    const std::optional<States> states = readStatesHere(m);
    if (!states) {
      break;
    }
    leave(m);
    item.ref = *self;
    item.parent = *parent;
    item.index = index;
    item.childCount = count;
    item.interfaces = *interfaces;
    item.name = kept(name);
    item.description = kept(description);
    item.states = *states;
    result.push_back(std::move(item));
  }
  return result;
}

}  // namespace tarqo::lnx::atspi
