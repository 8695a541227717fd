#include "tests/support/observation.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tarqo {

const Json& nodesOf(const Json& observation) { return observation.at("snapshot").at("nodes"); }

std::vector<std::string> namesOf(const Json& observation) {
  std::vector<std::string> names;
  for (const Json& node : nodesOf(observation)) {
    names.push_back(node.at("name"));
  }
  return names;
}

std::vector<std::string> keysOf(const Json& object) {
  std::vector<std::string> keys;
  for (const auto& member : object.items()) {
    keys.push_back(member.key());
  }
  return keys;
}

std::string bytesOfBase64(const std::string& text) {
  const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string bytes;
  unsigned group = 0;
  int bits = 0;
  EXPECT_EQ(text.size() % 4, 0U);
  for (const char c : text.substr(0, text.find('='))) {
    const std::size_t digit = alphabet.find(c);
    EXPECT_NE(digit, std::string::npos) << "no base64: " << c;
    group = group << 6U | static_cast<unsigned>(digit & 63U);
    bits += 6;
    if (bits >= 8) {
      bits -= 8;
      bytes += static_cast<char>(group >> bits & 0xFFU);
    }
  }
  return bytes;
}

Json withoutId(const Json& snapshot) {
  const std::string id = snapshot.at("id");
  std::string text = snapshot.dump();
  for (std::size_t at = text.find(id); at != std::string::npos; at = text.find(id)) {
    text.replace(at, id.size(), "S");
  }
  return Json::parse(text);
}

int AskedAccessibility::reads(const sim::Node& node, std::string_view name) const {
  const Question question{node.element(), name};
  return static_cast<int>(std::count(read_.begin(), read_.end(), question));
}

int AskedAccessibility::settableQuestions(const sim::Node& node, std::string_view name) const {
  const Question question{node.element(), name};
  return static_cast<int>(std::count(settable_.begin(), settable_.end(), question));
}

Element AskedAccessibility::application(Pid pid, Duration messagingTimeout) {
  return service_.application(pid, messagingTimeout);
}

std::optional<Value> AskedAccessibility::attribute(const Element& element, std::string_view name) {
  read_.emplace_back(element, name);
  return service_.attribute(element, name);
}

std::vector<std::optional<Value>> AskedAccessibility::attributes(
    const Element& element, std::span<const std::string_view> names) {
  for (const std::string_view name : names) {
    read_.emplace_back(element, name);
  }
  return service_.attributes(element, names);
}

std::vector<std::string> AskedAccessibility::actionNames(const Element& element) {
  return service_.actionNames(element);
}

Performed AskedAccessibility::perform(const Element& element, std::string_view action) {
  return service_.perform(element, action);
}

bool AskedAccessibility::isEndangeredByKeys(Pid pid) { return service_.isEndangeredByKeys(pid); }

std::optional<Element> AskedAccessibility::otherKeyWindow(const Element& window) {
  return service_.otherKeyWindow(window);
}

bool AskedAccessibility::takesTextByKeys(const Element& element) {
  return service_.takesTextByKeys(element);
}

std::optional<Size> AskedAccessibility::wheelStep(const Element& element) {
  return service_.wheelStep(element);
}

bool AskedAccessibility::set(const Element& element, std::string_view name, const Value& value) {
  return service_.set(element, name, value);
}

bool AskedAccessibility::isSettable(const Element& element, std::string_view name) {
  settable_.emplace_back(element, name);
  return service_.isSettable(element, name);
}

std::optional<Element> AskedAccessibility::elementAt(Point point) {
  return service_.elementAt(point);
}

std::optional<Pid> AskedAccessibility::pidOf(const Element& element) {
  return service_.pidOf(element);
}

std::unique_ptr<Observer> AskedAccessibility::observe(Pid pid, NotificationCallback callback) {
  return service_.observe(pid, std::move(callback));
}

std::unique_ptr<TreeRead> AskedAccessibility::readTree(const Element& root,
                                                       const TreeReadLimits& limits) {
  return service_.readTree(root, limits);
}

Platform AskedAccessibility::in(const Platform& platform) {
  return {*this,
          platform.workspace,
          platform.bundles,
          platform.processes,
          platform.permissions,
          platform.windowServer,
          platform.screenCapture,
          platform.inputEvents,
          platform.textRecognizer,
          platform.images,
          platform.clock,
          platform.random};
}

}  // namespace tarqo
