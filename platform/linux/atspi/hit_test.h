// Hit tests: what lies under a point of the screen.
//
// Worker thread only.
#pragma once

#include <optional>
#include <vector>

#include "platform/accessibility.h"
#include "platform/linux/atspi/application_element.h"
#include "platform/linux/atspi/read/element.h"
#include "platform/linux/atspi/read/reader.h"
#include "platform/linux/atspi/tree_relations.h"

namespace tarqo::lnx {

class HitTest {
 public:
  /// All are kept and outlive this.
  HitTest(AtspiReader& reader, TreeRelations& relations, ApplicationElement& application)
      : reader_(reader), relations_(relations), application_(application) {}

  /// The deepest object of whichever application at a point, in screen points. Looks anew where the
  /// windows are. Empty over the desktop, and when the application does not answer in time.
  [[nodiscard]] std::optional<Element> elementAt(Point point);

 private:
  using Parts = AtspiElement::Parts;

  [[nodiscard]] std::vector<Parts> hitCandidates(const LocatedWindow& window, Point point);
  [[nodiscard]] std::optional<AtspiRef> popupObject(const Parts& top, const LocatedWindow& popup,
                                                    Point point);
  [[nodiscard]] std::optional<AtspiRef> shownInPopup(const Parts& start, const LocatedWindow& popup,
                                                     Point point);
  [[nodiscard]] std::optional<AtspiRef> confirmedAt(const Parts& start, Point point);
  [[nodiscard]] bool liesAt(const Parts& start, const AtspiRef& ref, Point point);
  [[nodiscard]] std::optional<AtspiRef> deepestAt(const Parts& start, Point point);
  [[nodiscard]] std::optional<AtspiRef> childAt(const Parts& object, Point point);
  [[nodiscard]] std::optional<AtspiRef> placedChildAt(const Parts& object, Point point);

  AtspiReader& reader_;
  TreeRelations& relations_;
  ApplicationElement& application_;
};

}  // namespace tarqo::lnx
