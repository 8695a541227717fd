// Attributes of application elements and of their windows.
//
// Worker thread only. Each attribute waits for the application at most about one messaging
// time-out.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/accessibility.h"
#include "platform/linux/atspi/read/notifications.h"
#include "platform/linux/atspi/read/reader.h"
#include "platform/linux/atspi/tree_relations.h"
#include "platform/linux/atspi/wire/object_handle.h"

namespace tarqo::lnx::atspi {

class ApplicationElement {
 public:
  /// All are kept and outlive this.
  ApplicationElement(Reader& reader, Notifications& notifications, TreeRelations& relations)
      : reader_(reader), notifications_(notifications), relations_(relations) {}

  /// An attribute of an application element; empty when the application has no such attribute.
  [[nodiscard]] std::optional<Value> attribute(const ObjectHandle& application,
                                               std::string_view name);

  /// An attribute of a window that the X server knows, or the document the window shows; empty for
  /// all other attributes, and for a window that the X server does not show.
  [[nodiscard]] std::optional<Value> windowAttribute(const ObjectHandle& window,
                                                     std::string_view name);

  /// The menu bar inside a window; empty when it is not among the window's first objects.
  [[nodiscard]] std::optional<Ref> menuBarBelow(const ObjectHandle& window);

 private:
  [[nodiscard]] std::vector<Element> windowsOf(const ObjectHandle& application);
  [[nodiscard]] std::optional<Element> focusedWindow(const ObjectHandle& application);
  [[nodiscard]] std::optional<Element> focusedElement(const ObjectHandle& application);
  [[nodiscard]] std::optional<Ref> focusedBelow(const ObjectHandle& window);
  [[nodiscard]] std::optional<Element> menuBar(const ObjectHandle& application);
  [[nodiscard]] std::optional<std::string> documentOf(const ObjectHandle& window);

  Reader& reader_;
  Notifications& notifications_;
  TreeRelations& relations_;
};

}  // namespace tarqo::lnx::atspi
