// Reads the answers of AT-SPI objects. Every function leaves its result untouched, or gives none,
// when the message has another shape: an application may answer anything. Texts are kept up to
// 64 KiB, attributes and actions up to 200.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/geometry.h"
#include "platform/linux/atspi/translate/tables.h"
#include "platform/linux/atspi/wire/bus.h"

namespace tarqo::lnx {

/// The interfaces that are asked for, one bit each.
enum class AtspiInterface : unsigned {
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

class AtspiInterfaces {
 public:
  [[nodiscard]] bool has(AtspiInterface which) const {
    return (bits_ & static_cast<unsigned>(which)) != 0;
  }
  void add(std::string_view name);

 private:
  unsigned bits_ = 0;
};

using AtspiAttributes = std::vector<std::pair<std::string, std::string>>;

/// The properties of an accessible object, read at once. What the toolkit left out is none.
struct AccessibleProperties {
  std::optional<std::string> name;
  std::optional<std::string> description;
  std::optional<std::string> identifier;
  std::optional<AtspiAttributes> attributes;
  std::optional<AtspiRef> parent;
  std::optional<int> childCount;
};

/// One row of the cache that some toolkits fill for a whole application at once.
struct CacheItem {
  AtspiRef ref;
  AtspiRef parent;
  int index = -1;       ///< Among the parent's children; -1 when the toolkit does not say.
  int childCount = -1;  ///< -1 when the cache leaves the children out.
  AtspiInterfaces interfaces;
  std::string name;
  std::uint32_t role = 0;
  std::string description;
  AtspiStates states;
};

[[nodiscard]] std::optional<std::string> readText(sd_bus_message* m);
[[nodiscard]] std::optional<std::uint32_t> readNumber(sd_bus_message* m);
[[nodiscard]] std::optional<bool> readBool(sd_bus_message* m);
[[nodiscard]] std::optional<AtspiRef> readRef(sd_bus_message* m);
[[nodiscard]] std::optional<std::vector<AtspiRef>> readRefs(sd_bus_message* m);
[[nodiscard]] std::optional<AtspiStates> readStates(sd_bus_message* m);
[[nodiscard]] std::optional<AtspiInterfaces> readInterfaces(sd_bus_message* m);
[[nodiscard]] std::optional<AtspiAttributes> readAttributes(sd_bus_message* m);

/// A rectangle as it was told, garbage included.
[[nodiscard]] std::optional<Rect> readExtents(sd_bus_message* m);

/// The names of the actions, in the order of their indexes.
[[nodiscard]] std::optional<std::vector<std::string>> readActions(sd_bus_message* m);

/// The contents of a variant, the answer to reading a property.
[[nodiscard]] std::optional<std::string> readVariantText(sd_bus_message* m);
[[nodiscard]] std::optional<double> readVariantDouble(sd_bus_message* m);
[[nodiscard]] std::optional<int> readVariantInt(sd_bus_message* m);
[[nodiscard]] std::optional<AtspiRef> readVariantRef(sd_bus_message* m);

[[nodiscard]] AccessibleProperties readProperties(sd_bus_message* m);

/// The targets of the relations of one type.
[[nodiscard]] std::vector<AtspiRef> readRelation(sd_bus_message* m, std::uint32_t type);

[[nodiscard]] std::vector<CacheItem> readCacheItems(sd_bus_message* m);

}  // namespace tarqo::lnx
