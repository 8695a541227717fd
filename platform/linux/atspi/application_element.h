// Attributes of application elements and of their windows.
//
// Worker thread only. Each attribute waits for the application at most about one messaging
// time-out.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
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

  /// As `Accessibility::otherKeyWindow`.
  [[nodiscard]] std::optional<Element> otherKeyWindow(const ObjectHandle& window);

  /// The address of the page that a window shows, with or without an object; for a dialog, that of
  /// the window that it is a dialog of. Empty when neither shows one.
  [[nodiscard]] std::optional<std::string> documentOf(const ObjectHandle& window);

  /// The menu bar inside a window; empty when it is not among the window's first objects.
  [[nodiscard]] std::optional<Ref> menuBarBelow(const ObjectHandle& window);

 private:
  /// A window with its element.
  struct ShownWindow {
    x11::LocatedWindow located;
    Element element;
  };

  [[nodiscard]] std::vector<ShownWindow> windowsOf(const ObjectHandle& application);
  [[nodiscard]] std::optional<Element> focusedWindow(const ObjectHandle& application);
  [[nodiscard]] std::optional<ObjectHandle> focusedObject(const ObjectHandle& application);
  [[nodiscard]] std::optional<Element> focusedElement(const ObjectHandle& application);
  [[nodiscard]] std::optional<Ref> focusedBelow(const ObjectHandle& window);
  [[nodiscard]] std::optional<Element> menuBar(const ObjectHandle& application);
  [[nodiscard]] std::optional<std::string> ownDocument(const ObjectHandle& window);
  [[nodiscard]] std::vector<Ref> embeddedIn(const ObjectHandle& window);
  [[nodiscard]] std::optional<Ref> pageBelow(const ObjectHandle& window);

  Reader& reader_;
  Notifications& notifications_;
  TreeRelations& relations_;
  std::unordered_map<Ref, Ref, RefHash> pages_;  ///< Found last, by window.
};

}  // namespace tarqo::lnx::atspi
