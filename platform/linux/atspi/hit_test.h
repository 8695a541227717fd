// Hit tests: what lies under a point of the screen.
//
// Worker thread only.
#pragma once

#include <optional>
#include <vector>

#include "platform/accessibility.h"
#include "platform/linux/atspi/application_element.h"
#include "platform/linux/atspi/read/reader.h"
#include "platform/linux/atspi/tree_relations.h"
#include "platform/linux/atspi/wire/object_handle.h"

namespace tarqo::lnx::atspi {

class HitTest {
 public:
  /// All are kept and outlive this.
  HitTest(Reader& reader, TreeRelations& relations, ApplicationElement& application)
      : reader_(reader), relations_(relations), application_(application) {}

  /// The deepest object of whichever application at a point, in screen points. Looks anew where the
  /// windows are. Empty over the desktop, and when the application does not answer in time.
  [[nodiscard]] std::optional<Element> elementAt(Point point);

 private:
  [[nodiscard]] std::optional<Element> bareWindow(const x11::LocatedWindow& window);
  [[nodiscard]] std::vector<ObjectHandle> hitCandidates(const x11::LocatedWindow& window,
                                                        Point point);
  [[nodiscard]] std::optional<Ref> popupObject(const ObjectHandle& top,
                                               const x11::LocatedWindow& popup, Point point);
  [[nodiscard]] std::optional<Ref> shownInPopup(const ObjectHandle& start,
                                                const x11::LocatedWindow& popup, Point point);
  [[nodiscard]] std::optional<Ref> confirmedAt(const ObjectHandle& start, Point point);
  [[nodiscard]] bool liesAt(const ObjectHandle& start, const Ref& ref, Point point);
  [[nodiscard]] std::optional<Ref> deepestAt(const ObjectHandle& start, Point point);
  [[nodiscard]] std::optional<Ref> childAt(const ObjectHandle& object, Point point);
  [[nodiscard]] std::optional<Ref> placedChildAt(const ObjectHandle& object, Point point);
  [[nodiscard]] std::optional<Ref> drawnOver(const std::vector<ObjectHandle>& way, Point point);
  [[nodiscard]] bool showsSomethingAt(const ObjectHandle& object, Point point);

  Reader& reader_;
  TreeRelations& relations_;
  ApplicationElement& application_;
};

}  // namespace tarqo::lnx::atspi
