#include "tests/platform/linux/atspi/recorded_application.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "platform/linux/atspi/wire/codec.h"
#include "platform/linux/x11/windows.h"
#include "tests/platform/linux/atspi/recorded_objects.h"
#include "tests/platform/linux/atspi/scripted_bus.h"

namespace tarqo::lnx::atspi {
namespace {

constexpr std::uint32_t kOfScreen = 0;

}  // namespace

RecordedApplication::RecordedApplication(std::istream& lines) {
  std::string line;
  while (std::getline(lines, line)) {
    Json parsed = Json::parse(line);
    if (header_.is_null()) {
      header_ = std::move(parsed);
    } else {
      byId_[parsed.at("id")] = objects_.size();
      objects_.push_back(std::move(parsed));
    }
  }
  if (!header_.is_object() || header_.value("recording", 0) != 1) {
    throw std::runtime_error("this is no recording");
  }
}

std::vector<x11::LocatedWindow> RecordedApplication::windows() const {
  std::vector<x11::LocatedWindow> result;
  for (const Json& recorded : header_.at("windows")) {
    x11::LocatedWindow window;
    window.number = static_cast<WindowNumber>(result.size() + 1);
    window.title = recorded.at("title");
    window.client = rectOf(recorded.at("client"));
    window.bounds = window.client;
    const auto edges = [](const Json& numbers) {
      return x11::Insets{numbers.at(0), numbers.at(1), numbers.at(2), numbers.at(3)};
    };
    if (!recorded.at("shadow").empty()) {
      window.shadow = edges(recorded.at("shadow"));
    }
    window.bounds = x11::visibleFrame({window.client, window.client,
                                       recorded.at("decoration").empty()
                                           ? std::nullopt
                                           : std::optional(edges(recorded.at("decoration"))),
                                       window.shadow});
    window.ordinary = true;
    window.rank = result.size();
    window.active = recorded.at("active");
    result.push_back(window);
  }
  return result;
}

const Json* RecordedApplication::objectAt(std::string_view path) const {
  if (!path.starts_with(kObjectPath)) {
    return nullptr;
  }
  const auto found = byId_.find(std::string(path.substr(kObjectPath.size())));
  return found == byId_.end() ? nullptr : &objects_[found->second];
}

int RecordedApplication::answer(sd_bus_message* call) const {
  const std::string_view member = sd_bus_message_get_member(call);
  if (member == "GetItems") {
    return cacheItems(call);
  }
  const Json* object = objectAt(sd_bus_message_get_path(call));
  if (object == nullptr) {
    return 0;
  }
  if (member == "GetMatches") {
    return shownChildren(call, *object);
  }
  if (member == "GetAccessibleAtPoint") {
    return childAtPoint(call, *object);
  }
  if (member == "Get") {
    return property(call, *object);
  }
  const ObjectAnswer own = objectAnswer(member);
  return own == nullptr ? 0 : own(call, *object);
}

/// The one rule that is asked for: the children that show.
int RecordedApplication::shownChildren(sd_bus_message* call, const Json& object) const {
  Json shown = Json::array();
  for (const Json& child : below(object)) {
    const auto found = child.is_string() ? byId_.find(child) : byId_.end();
    if (found != byId_.end() && States(stateBits(objects_[found->second])).has(State::showing)) {
      shown.push_back(child);
    }
  }
  return replyWith(call, [&shown](sd_bus_message* reply) { appendRefs(reply, shown); });
}

int RecordedApplication::childAtPoint(sd_bus_message* call, const Json& object) const {
  std::int32_t x = 0;
  std::int32_t y = 0;
  std::uint32_t coordinates = kOfScreen;
  sd_bus_message_read(call, "iiu", &x, &y, &coordinates);
  Json hit;
  for (const Json& child : below(object)) {
    const auto found = child.is_string() ? byId_.find(child) : byId_.end();
    if (found == byId_.end()) {
      continue;
    }
    const Json& its = objects_[found->second];
    const Json* place = memberOf(its, coordinates == kOfScreen ? "onScreen" : "inWindow");
    if (place != nullptr &&
        rectOf(*place).contains(Point{static_cast<double>(x), static_cast<double>(y)}) &&
        States(stateBits(its)).has(State::showing)) {
      hit = child;
    }
  }
  return replyWith(call, [&hit](sd_bus_message* reply) { appendRef(reply, hit); });
}

int RecordedApplication::property(sd_bus_message* call, const Json& object) const {
  const char* interface = nullptr;
  const char* asked = nullptr;
  sd_bus_message_read(call, "ss", &interface, &asked);
  const std::string name = asked;
  Json value;
  if (name == "ToolkitName") {
    value = header_.at("toolkit");
  } else if (name == "Version") {
    value = header_.at("version");
  } else if (name == "CharacterCount") {
    const Json* text = memberOf(object, "text");
    value = text == nullptr ? Json() : Json(charactersIn(text->get<std::string>()));
  } else if (name == "CurrentValue") {
    value = object.value("value", Json());
  } else if (name == "NColumns") {
    value = object.value("columns", Json());
  } else {
    value = object.at("properties").value(name, Json());
    // No parent is an answer as well.
    if (value.is_null() && !(name == "Parent" && object.at("properties").contains(name))) {
      return 0;
    }
  }
  return value.is_null() && name != "Parent"
             ? 0
             : replyWith(call, [&](sd_bus_message* reply) { appendVariant(reply, name, value); });
}

int RecordedApplication::cacheItems(sd_bus_message* call) const {
  return replyWith(call, [this](sd_bus_message* reply) {
    sd_bus_message_open_container(reply, 'a', "((so)(so)(so)iiassusau)");
    for (const Json& object : objects_) {
      const Json& properties = object.at("properties");
      const Json parent = properties.value("Parent", Json());
      const Json* above = parent.is_string()
                              ? objectAt(std::string(kObjectPath) + parent.get<std::string>())
                              : nullptr;
      const Json siblings = above == nullptr ? Json::array() : below(*above);
      const auto place = std::ranges::find(siblings, object.at("id"));
      sd_bus_message_open_container(reply, 'r', "(so)(so)(so)iiassusau");
      appendRef(reply, object.at("id"));
      appendRef(reply, "root");
      appendRef(reply, parent);
      sd_bus_message_append(
          reply, "ii", place == siblings.end() ? -1 : static_cast<int>(place - siblings.begin()),
          properties.value("ChildCount", -1));
      appendInterfaces(reply, object);
      sd_bus_message_append(reply, "sus", properties.value("Name", "").c_str(),
                            object.at("role").get<std::uint32_t>(),
                            properties.value("Description", "").c_str());
      appendStates(reply, object);
      sd_bus_message_close_container(reply);
    }
    sd_bus_message_close_container(reply);
  });
}

}  // namespace tarqo::lnx::atspi
