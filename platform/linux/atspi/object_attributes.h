// Attributes of objects: everything but application elements.
//
// Worker thread only.
#pragma once

#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "platform/accessibility.h"
#include "platform/linux/atspi/application_element.h"
#include "platform/linux/atspi/read/element.h"
#include "platform/linux/atspi/read/reader.h"
#include "platform/linux/atspi/translate/translate.h"
#include "platform/linux/atspi/tree_relations.h"

namespace tarqo::lnx {

class ObjectAttributes {
 public:
  /// All are kept and outlive this.
  ObjectAttributes(AtspiReader& reader, TreeRelations& relations, ApplicationElement& application)
      : reader_(reader), relations_(relations), application_(application) {}

  /// One slot for each name, in order, empty where the object has no such attribute. An empty list
  /// when the object does not answer and is no window that the X server shows.
  [[nodiscard]] std::vector<std::optional<Value>> read(const AtspiElement::Parts& object,
                                                       std::span<const std::string_view> names);

  /// The object as the translation sees it. Refers to `facts`.
  [[nodiscard]] AtspiView viewOf(const AtspiElement::Parts& object, const AtspiFacts& facts);

 private:
  using Parts = AtspiElement::Parts;

  [[nodiscard]] std::vector<std::optional<Value>> silentWindow(
      const Parts& window, std::span<const std::string_view> names);
  [[nodiscard]] std::optional<Value> attribute(const Parts& object, const FactsPtr& facts,
                                               std::string_view name);

  AtspiReader& reader_;
  TreeRelations& relations_;
  ApplicationElement& application_;
};

}  // namespace tarqo::lnx
