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
#include "platform/linux/atspi/read/reader.h"
#include "platform/linux/atspi/translate/view.h"
#include "platform/linux/atspi/tree_relations.h"
#include "platform/linux/atspi/wire/object_handle.h"

namespace tarqo::lnx::atspi {

class ObjectAttributes {
 public:
  /// All are kept and outlive this.
  ObjectAttributes(Reader& reader, TreeRelations& relations, ApplicationElement& application)
      : reader_(reader), relations_(relations), application_(application) {}

  /// One slot for each name, in order, empty where the object has no such attribute. An empty list
  /// when the object does not answer and is no window that the X server shows.
  [[nodiscard]] std::vector<std::optional<Value>> read(const ObjectHandle& object,
                                                       std::span<const std::string_view> names);

  /// The object as the translation sees it. Refers to `properties`.
  [[nodiscard]] View viewOf(const ObjectHandle& object, const Properties& properties);

 private:
  [[nodiscard]] std::vector<std::optional<Value>> silentWindow(
      const ObjectHandle& window, std::span<const std::string_view> names);
  [[nodiscard]] std::optional<Value> attribute(const ObjectHandle& object,
                                               const PropertiesPtr& properties,
                                               std::string_view name);
  [[nodiscard]] std::optional<Value> serversTitle(const ObjectHandle& window,
                                                  const Properties& properties);

  Reader& reader_;
  TreeRelations& relations_;
  ApplicationElement& application_;
};

}  // namespace tarqo::lnx::atspi
