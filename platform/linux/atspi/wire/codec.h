// Reads the answers of AT-SPI objects. Every function gives an empty result when the message has
// another shape: an application may answer anything. Texts are kept up to 64 KiB, attributes and
// actions up to 200.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/geometry.h"
#include "platform/linux/atspi/wire/bus.h"

namespace tarqo::lnx::atspi {

/// The states that are read, by their bit numbers on the bus.
enum class State : unsigned {
  active = 1,
  checked = 4,
  editable = 7,
  enabled = 8,
  expandable = 9,
  expanded = 10,
  focusable = 11,
  focused = 12,
  iconified = 15,
  modal = 16,
  multiLine = 17,
  pressed = 20,
  selectable = 22,
  selected = 23,
  sensitive = 24,
  showing = 25,
  singleLine = 26,
  visible = 30,
  managesDescendants = 31,
  indeterminate = 32,
  checkable = 41,
  readOnly = 43,
};

/// The states of an object as the bus sends them: one bit each.
class States {
 public:
  States() = default;
  explicit States(std::uint64_t bits) : bits_(bits) {}

  [[nodiscard]] bool has(State state) const {
    return (bits_ >> static_cast<unsigned>(state) & 1U) != 0;
  }

 private:
  std::uint64_t bits_ = 0;
};

/// The interfaces that are read, one bit each.
enum class Interface : unsigned {
  action = 1U << 0,
  component = 1U << 1,
  collection = 1U << 2,
  document = 1U << 3,
  editableText = 1U << 4,
  selection = 1U << 5,
  table = 1U << 6,
  text = 1U << 7,
  value = 1U << 8,
};

class Interfaces {
 public:
  [[nodiscard]] bool has(Interface which) const {
    return (bits_ & static_cast<unsigned>(which)) != 0;
  }
  void add(std::string_view name);

 private:
  unsigned bits_ = 0;
};

using Attributes = std::vector<std::pair<std::string, std::string>>;

/// The properties of an accessible object, read at once. What the toolkit left out is empty.
struct AccessibleProperties {
  std::optional<std::string> name;
  std::optional<std::string> description;
  std::optional<std::string> identifier;
  std::optional<Attributes> attributes;
  std::optional<Ref> parent;
  std::optional<int> childCount;
};

/// One row of the cache that some toolkits fill for a whole application at once.
struct CacheItem {
  Ref ref;
  Ref parent;
  int index = -1;       ///< Among the parent's children; -1 when the toolkit does not report it.
  int childCount = -1;  ///< -1 when the cache leaves the children out.
  Interfaces interfaces;
  std::string name;
  std::uint32_t role = 0;
  std::string description;
  States states;
};

[[nodiscard]] std::optional<std::string> readText(sd_bus_message* m);
[[nodiscard]] std::optional<std::uint32_t> readNumber(sd_bus_message* m);
[[nodiscard]] std::optional<bool> readBool(sd_bus_message* m);
[[nodiscard]] std::optional<Ref> readRef(sd_bus_message* m);
[[nodiscard]] std::optional<std::vector<Ref>> readRefs(sd_bus_message* m);
[[nodiscard]] std::optional<States> readStates(sd_bus_message* m);
[[nodiscard]] std::optional<Interfaces> readInterfaces(sd_bus_message* m);
[[nodiscard]] std::optional<Attributes> readAttributes(sd_bus_message* m);

/// A rectangle as it was reported, garbage included.
[[nodiscard]] std::optional<Rect> readExtents(sd_bus_message* m);

/// The names of the actions, in the order of their indexes.
[[nodiscard]] std::optional<std::vector<std::string>> readActions(sd_bus_message* m);

/// The contents of a variant, the answer to reading a property.
[[nodiscard]] std::optional<std::string> readVariantText(sd_bus_message* m);
[[nodiscard]] std::optional<double> readVariantDouble(sd_bus_message* m);
[[nodiscard]] std::optional<int> readVariantInt(sd_bus_message* m);
[[nodiscard]] std::optional<Ref> readVariantRef(sd_bus_message* m);

[[nodiscard]] AccessibleProperties readProperties(sd_bus_message* m);

/// The targets of the relations of one type.
[[nodiscard]] std::vector<Ref> readRelation(sd_bus_message* m, std::uint32_t type);

[[nodiscard]] std::vector<CacheItem> readCacheItems(sd_bus_message* m);

}  // namespace tarqo::lnx::atspi
