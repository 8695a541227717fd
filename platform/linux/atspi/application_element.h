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
#include "platform/linux/atspi/read/element.h"
#include "platform/linux/atspi/read/reader.h"
#include "platform/linux/atspi/tree_relations.h"
#include "platform/linux/atspi/wire/events.h"

namespace tarqo::lnx {

class ApplicationElement {
 public:
  /// All are kept and outlive this.
  ApplicationElement(AtspiReader& reader, AtspiEvents& events, TreeRelations& relations)
      : reader_(reader), events_(events), relations_(relations) {}

  /// An attribute of an application element; empty when it has none of that name.
  [[nodiscard]] std::optional<Value> attribute(const AtspiElement::Parts& application,
                                               std::string_view name);

  /// An attribute of a window that the X server knows, or the document the window shows; empty for
  /// all other attributes, and for a window that the X server does not show.
  [[nodiscard]] std::optional<Value> windowAttribute(const AtspiElement::Parts& window,
                                                     std::string_view name);

  /// The menu bar inside a window; empty when there is none among its first objects.
  [[nodiscard]] std::optional<AtspiRef> menuBarBelow(const AtspiElement::Parts& window);

 private:
  using Parts = AtspiElement::Parts;

  [[nodiscard]] std::vector<Element> windowsOf(const Parts& application);
  [[nodiscard]] std::optional<Element> focusedWindow(const Parts& application);
  [[nodiscard]] std::optional<Element> focusedElement(const Parts& application);
  [[nodiscard]] std::optional<AtspiRef> focusedBelow(const Parts& window);
  [[nodiscard]] std::optional<Element> menuBar(const Parts& application);
  [[nodiscard]] std::optional<std::string> documentOf(const Parts& window);

  AtspiReader& reader_;
  AtspiEvents& events_;
  TreeRelations& relations_;
};

}  // namespace tarqo::lnx
