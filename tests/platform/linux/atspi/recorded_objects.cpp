#include "tests/platform/linux/atspi/recorded_objects.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "tests/platform/linux/atspi/scripted_bus.h"

namespace tarqo::lnx::atspi {
namespace {

constexpr std::uint32_t kOfScreen = 0;

/// By their bit numbers.
constexpr const char* kStateNames =
    "invalid active armed busy checked collapsed defunct editable enabled expandable expanded "
    "focusable focused has-tooltip horizontal iconified modal multi-line multiselectable opaque "
    "pressed resizable selectable selected sensitive showing single-line stale transient vertical "
    "visible manages-descendants indeterminate required truncated animated invalid-entry "
    "supports-autocompletion selectable-text is-default visited checkable has-popup read-only";

std::vector<std::string> wordsOf(const std::string& text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), {}};
}

void appendTexts(sd_bus_message* to, const Json& texts) {
  sd_bus_message_open_container(to, 'a', "{ss}");
  for (const auto& [key, text] : texts.items()) {
    sd_bus_message_append(to, "{ss}", key.c_str(), text.get<std::string>().c_str());
  }
  sd_bus_message_close_container(to);
}

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

/// The beginning of a text, of that many characters.
std::string beginning(const std::string& text, int characters) {
  std::size_t end = 0;
  while (end < text.size() && (isContinuation(text[end]) || characters-- > 0)) {
    ++end;
  }
  return text.substr(0, end);
}

int role(sd_bus_message* call, const Json& object) {
  return sd_bus_reply_method_return(call, "u", object.at("role").get<std::uint32_t>()) + 1;
}

int states(sd_bus_message* call, const Json& object) {
  return replyWith(call, [&object](sd_bus_message* reply) { appendStates(reply, object); });
}

int interfaces(sd_bus_message* call, const Json& object) {
  return replyWith(call, [&object](sd_bus_message* reply) { appendInterfaces(reply, object); });
}

int children(sd_bus_message* call, const Json& object) {
  const Json* children = memberOf(object, "children");
  return children == nullptr
             ? 0
             : replyWith(call, [children](sd_bus_message* reply) { appendRefs(reply, *children); });
}

int childAtIndex(sd_bus_message* call, const Json& object) {
  std::int32_t index = -1;
  sd_bus_message_read(call, "i", &index);
  const Json children = below(object);
  const bool isThere = index >= 0 && static_cast<std::size_t>(index) < children.size();
  return replyWith(call, [&](sd_bus_message* reply) {
    appendRef(reply, isThere ? children.at(static_cast<std::size_t>(index)) : Json());
  });
}

int attributes(sd_bus_message* call, const Json& object) {
  const Json* own = memberOf(object, "attributes");
  const Json* among = memberOf(object.at("properties"), "Attributes");
  const Json* found = own != nullptr ? own : among;
  return found == nullptr
             ? 0
             : replyWith(call, [found](sd_bus_message* reply) { appendTexts(reply, *found); });
}

int relations(sd_bus_message* call, const Json& object) {
  const Json* relations = memberOf(object, "relations");
  return replyWith(call, [relations](sd_bus_message* reply) {
    sd_bus_message_open_container(reply, 'a', "(ua(so))");
    for (const Json& relation : relations == nullptr ? Json::array() : *relations) {
      sd_bus_message_open_container(reply, 'r', "ua(so)");
      sd_bus_message_append(reply, "u", relation.at(0).get<std::uint32_t>());
      appendRefs(reply, relation.at(1));
      sd_bus_message_close_container(reply);
    }
    sd_bus_message_close_container(reply);
  });
}

int extents(sd_bus_message* call, const Json& object) {
  std::uint32_t coordinates = kOfScreen;
  sd_bus_message_read(call, "u", &coordinates);
  const Json* place = memberOf(object, coordinates == kOfScreen ? "onScreen" : "inWindow");
  return place == nullptr ? 0
                          : sd_bus_reply_method_return(
                                call, "(iiii)", place->at(0).get<int>(), place->at(1).get<int>(),
                                place->at(2).get<int>(), place->at(3).get<int>()) +
                                1;
}

/// Recorded for the middle of an object alone, which is what is asked.
int contains(sd_bus_message* call, const Json& object) {
  const Json* drawn = memberOf(object, "drawn");
  return drawn == nullptr || !drawn->is_boolean()
             ? 0
             : sd_bus_reply_method_return(call, "b", drawn->get<bool>() ? 1 : 0) + 1;
}

int actions(sd_bus_message* call, const Json& object) {
  const Json* actions = memberOf(object, "actions");
  return actions == nullptr ? 0 : replyWith(call, [actions](sd_bus_message* reply) {
    sd_bus_message_open_container(reply, 'a', "(sss)");
    for (const Json& action : *actions) {
      sd_bus_message_append(reply, "(sss)", action.at(0).get<std::string>().c_str(), "", "");
    }
    sd_bus_message_close_container(reply);
  });
}

int actionName(sd_bus_message* call, const Json& object) {
  std::int32_t index = -1;
  sd_bus_message_read(call, "i", &index);
  const Json* actions = memberOf(object, "actions");
  if (actions == nullptr || index < 0 || static_cast<std::size_t>(index) >= actions->size()) {
    return 0;
  }
  const std::string name = actions->at(static_cast<std::size_t>(index)).at(1);
  return sd_bus_reply_method_return(call, "s", name.c_str()) + 1;
}

int text(sd_bus_message* call, const Json& object) {
  const Json* text = memberOf(object, "text");
  std::int32_t from = 0;
  std::int32_t to = 0;
  sd_bus_message_read(call, "ii", &from, &to);
  if (text == nullptr || from != 0) {
    return 0;
  }
  const std::string whole = text->get<std::string>();
  const std::string part = to < 0 ? whole : beginning(whole, to);
  return sd_bus_reply_method_return(call, "s", part.c_str()) + 1;
}

int selectedChild(sd_bus_message* call, const Json& object) {
  const Json* selected = memberOf(object, "selected");
  return selected == nullptr
             ? 0
             : replyWith(call, [selected](sd_bus_message* reply) { appendRef(reply, *selected); });
}

int columnHeader(sd_bus_message* call, const Json& object) {
  std::int32_t index = -1;
  sd_bus_message_read(call, "i", &index);
  const Json* headers = memberOf(object, "headers");
  if (headers == nullptr || index < 0 || static_cast<std::size_t>(index) >= headers->size()) {
    return 0;
  }
  return replyWith(call, [&](sd_bus_message* reply) {
    appendRef(reply, headers->at(static_cast<std::size_t>(index)));
  });
}

int documentAttribute(sd_bus_message* call, const Json& object) {
  const char* name = nullptr;
  sd_bus_message_read(call, "s", &name);
  const Json* document = memberOf(object, "document");
  const Json* value = document == nullptr ? nullptr : memberOf(*document, name);
  return value == nullptr
             ? 0
             : sd_bus_reply_method_return(call, "s", value->get<std::string>().c_str()) + 1;
}

int allProperties(sd_bus_message* call, const Json& object) {
  if (!object.at("allAtOnce").get<bool>()) {
    return 0;
  }
  return replyWith(call, [&object](sd_bus_message* reply) {
    sd_bus_message_open_container(reply, 'a', "{sv}");
    for (const auto& [name, value] : object.at("properties").items()) {
      sd_bus_message_open_container(reply, 'e', "sv");
      sd_bus_message_append(reply, "s", name.c_str());
      appendVariant(reply, name, value);
      sd_bus_message_close_container(reply);
    }
    sd_bus_message_close_container(reply);
  });
}

}  // namespace

std::uint64_t stateBits(const Json& object) {
  static const std::vector<std::string> kNames = wordsOf(kStateNames);
  std::uint64_t bits = 0;
  for (const std::string& word : wordsOf(object.at("states"))) {
    const auto found = std::ranges::find(kNames, word);
    if (found == kNames.end()) {
      throw std::runtime_error("no state is called " + word);
    }
    bits |= std::uint64_t{1} << static_cast<unsigned>(found - kNames.begin());
  }
  return bits;
}

Rect rectOf(const Json& numbers) {
  return {numbers.at(0).get<double>(), numbers.at(1).get<double>(), numbers.at(2).get<double>(),
          numbers.at(3).get<double>()};
}

void appendRef(sd_bus_message* to, const Json& ref) {
  std::string name = ScriptedBus::kApplicationName;
  std::string path = "/org/a11y/atspi/null";
  if (ref.is_string()) {
    path = std::string(kObjectPath) + ref.get<std::string>();
  } else if (ref.is_array()) {
    name = ref.at(0) == "registry" ? "org.a11y.atspi.Registry" : ":1.99";
    path = ref.at(1);
  }
  sd_bus_message_append(to, "(so)", name.c_str(), path.c_str());
}

void appendRefs(sd_bus_message* to, const Json& refs) {
  sd_bus_message_open_container(to, 'a', "(so)");
  for (const Json& ref : refs) {
    appendRef(to, ref);
  }
  sd_bus_message_close_container(to);
}

void appendStates(sd_bus_message* to, const Json& object) {
  const std::uint64_t bits = stateBits(object);
  sd_bus_message_append(to, "au", 2, static_cast<std::uint32_t>(bits),
                        static_cast<std::uint32_t>(bits >> 32U));
}

void appendInterfaces(sd_bus_message* to, const Json& object) {
  sd_bus_message_open_container(to, 'a', "s");
  for (const std::string& name : wordsOf(object.at("interfaces"))) {
    sd_bus_message_append(to, "s", ("org.a11y.atspi." + name).c_str());
  }
  sd_bus_message_close_container(to);
}

void appendVariant(sd_bus_message* to, const std::string& name, const Json& value) {
  if (name == "Parent") {
    sd_bus_message_open_container(to, 'v', "(so)");
    appendRef(to, value);
    sd_bus_message_close_container(to);
  } else if (value.is_object()) {
    sd_bus_message_open_container(to, 'v', "a{ss}");
    appendTexts(to, value);
    sd_bus_message_close_container(to);
  } else if (value.is_string()) {
    sd_bus_message_append(to, "v", "s", value.get<std::string>().c_str());
  } else if (name == "CurrentValue") {
    sd_bus_message_append(to, "v", "d", value.get<double>());
  } else {
    sd_bus_message_append(to, "v", "i", value.get<std::int32_t>());
  }
}

int charactersIn(const std::string& text) {
  return static_cast<int>(
      std::ranges::count_if(text, [](char byte) { return !isContinuation(byte); }));
}

const Json* memberOf(const Json& object, const char* name) {
  const auto found = object.find(name);
  return found == object.end() ? nullptr : &*found;
}

Json below(const Json& object) {
  const Json* children = memberOf(object, "children");
  const Json* cells = memberOf(object, "cells");
  return children != nullptr ? *children : cells != nullptr ? *cells : Json::array();
}

ObjectAnswer objectAnswer(std::string_view method) {
  static const std::map<std::string_view, ObjectAnswer> kAnswers{
      {"GetRole", role},
      {"GetState", states},
      {"GetInterfaces", interfaces},
      {"GetChildren", children},
      {"GetChildAtIndex", childAtIndex},
      {"GetAttributes", attributes},
      {"GetRelationSet", relations},
      {"GetExtents", extents},
      {"Contains", contains},
      {"GetActions", actions},
      {"GetName", actionName},
      {"GetText", text},
      {"GetSelectedChild", selectedChild},
      {"GetColumnHeader", columnHeader},
      {"GetAttributeValue", documentAttribute},
      {"GetAll", allProperties},
  };
  const auto found = kAnswers.find(method);
  return found == kAnswers.end() ? nullptr : found->second;
}

}  // namespace tarqo::lnx::atspi
