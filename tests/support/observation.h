// Reading observations in tests, and watching what an observation asks of the target.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/json.h"
#include "platform/platform.h"
#include "platform/sim/sim_node.h"

namespace tarqo {

[[nodiscard]] const Json& nodesOf(const Json& observation);

/// The names of all nodes, in their order.
[[nodiscard]] std::vector<std::string> namesOf(const Json& observation);

/// The keys of an object, sorted.
[[nodiscard]] std::vector<std::string> keysOf(const Json& object);

/// The bytes behind standard base64 without line breaks; the test fails on any other character.
[[nodiscard]] std::string bytesOfBase64(const std::string& text);

/// A snapshot with its own id replaced by "S" wherever it stands, so that two can be compared.
[[nodiscard]] Json withoutId(const Json& snapshot);

/// Passes every call on, and remembers which attributes were asked for, and of which element
/// whether something can be set.
class AskedAccessibility final : public Accessibility {
 public:
  explicit AskedAccessibility(Accessibility& service) : service_(service) {}

  /// How often an attribute of a node was read, alone or among others.
  [[nodiscard]] int reads(const sim::Node& node, std::string_view name) const;
  /// How often it was asked whether the attribute can be set.
  [[nodiscard]] int settableQuestions(const sim::Node& node, std::string_view name) const;

  Element application(Pid pid, Duration messagingTimeout) override;
  std::optional<Value> attribute(const Element& element, std::string_view name) override;
  std::vector<std::optional<Value>> attributes(const Element& element,
                                               std::span<const std::string_view> names) override;
  std::vector<std::string> actionNames(const Element& element) override;
  Performed perform(const Element& element, std::string_view action) override;
  bool isEndangeredByKeys(Pid pid) override;
  std::optional<Element> otherKeyWindow(const Element& window) override;
  bool takesTextByKeys(const Element& element) override;
  std::optional<Size> wheelStep(const Element& element) override;
  bool set(const Element& element, std::string_view name, const Value& value) override;
  bool isSettable(const Element& element, std::string_view name) override;
  std::optional<Element> elementAt(Point point) override;
  std::optional<Pid> pidOf(const Element& element) override;
  std::unique_ptr<Observer> observe(Pid pid, NotificationCallback callback) override;
  std::unique_ptr<TreeRead> readTree(const Element& root, const TreeReadLimits& limits) override;

  /// The platform with this service in place of its own.
  [[nodiscard]] Platform in(const Platform& platform);

 private:
  using Question = std::pair<Element, std::string>;

  Accessibility& service_;
  std::vector<Question> read_;
  std::vector<Question> settable_;
};

}  // namespace tarqo
