// Where objects are, and which objects they hang together with: frames, parents, children.
//
// Worker thread only.
#pragma once

#include <optional>
#include <vector>

#include "platform/accessibility.h"
#include "platform/linux/atspi/read/element.h"
#include "platform/linux/atspi/read/reader.h"
#include "platform/linux/atspi/wire/events.h"

namespace tarqo::lnx {

class TreeRelations {
 public:
  /// Both are kept and outlive this.
  TreeRelations(AtspiReader& reader, AtspiEvents& events) : reader_(reader), events_(events) {}

  /// The frame on the screen, in screen points; empty for windows, whose frame the X server knows,
  /// and for what has no plausible place.
  [[nodiscard]] std::optional<Rect> frameOf(const AtspiElement::Parts& object,
                                            const AtspiFacts& facts);

  /// How far the coordinates that the object reports are from the screen's; empty when its window
  /// cannot be found.
  [[nodiscard]] std::optional<Point> offsetOf(const AtspiElement::Parts& object);

  /// The children as elements: without menu bars, which hang on the application, and without texts
  /// that repeat their control; a window has the open context menus as well.
  [[nodiscard]] Values childrenOf(const AtspiElement::Parts& object, const AtspiFacts& facts);

  /// The parent; the application element for a window. Empty when the object reports none.
  [[nodiscard]] std::optional<Element> parentOf(const AtspiElement::Parts& object,
                                                const AtspiFacts& facts);

  /// The open menus that no object of the application's windows holds: those of a right click.
  [[nodiscard]] std::vector<AtspiRef> contextMenus(const AtspiElement::Parts& window);

  /// An object that was not reached from its parent, with its place in a menu filled in.
  [[nodiscard]] AtspiElement::Parts asMet(AtspiElement::Parts object);

  /// Whether a GTK 3 field is one to search with.
  [[nodiscard]] bool hasSearchIcon(const AtspiElement::Parts& object, const AtspiFacts& facts);

 private:
  using Parts = AtspiElement::Parts;

  [[nodiscard]] std::vector<AtspiRef> shownChildren(const Parts& object, const AtspiFacts& facts);
  [[nodiscard]] bool hangsNowhere(const Parts& menu);

  AtspiReader& reader_;
  AtspiEvents& events_;
};

}  // namespace tarqo::lnx
