// Frames, parents and children of objects.
//
// Worker thread only.
#pragma once

#include <optional>
#include <vector>

#include "platform/accessibility.h"
#include "platform/linux/atspi/read/notifications.h"
#include "platform/linux/atspi/read/reader.h"
#include "platform/linux/atspi/wire/object_handle.h"

namespace tarqo::lnx::atspi {

class TreeRelations {
 public:
  /// Both are kept and outlive this.
  TreeRelations(Reader& reader, Notifications& notifications)
      : reader_(reader), notifications_(notifications) {}

  /// The frame on the screen, in screen points; empty for windows, whose frame the X server knows,
  /// and for what has no plausible place.
  [[nodiscard]] std::optional<Rect> frameOf(const ObjectHandle& object,
                                            const Properties& properties);

  /// How far the coordinates that the object reports are from the screen's; empty when its window
  /// cannot be found.
  [[nodiscard]] std::optional<Point> offsetOf(const ObjectHandle& object);

  /// The children as elements: without menu bars, which belong to the application, and without
  /// texts that repeat their control. A window has the open context menus as well.
  [[nodiscard]] Values childrenOf(const ObjectHandle& object, const Properties& properties);

  /// The parent; the application element for a window. Empty when the object reports none.
  [[nodiscard]] std::optional<Element> parentOf(const ObjectHandle& object,
                                                const Properties& properties);

  /// The open menus that no object of the application's windows holds: those of a right click.
  [[nodiscard]] std::vector<Ref> contextMenus(const ObjectHandle& window);

  /// The field that lies over a cell while it is edited, of the container `hit` or of the one that
  /// the cell `hit` is in; empty unless it has the focus and its place holds the point.
  [[nodiscard]] std::optional<Ref> inlineEditorOver(const ObjectHandle& hit, Point point);

  /// An object that was not reached from its parent, with its place in a menu filled in.
  [[nodiscard]] ObjectHandle withMenuPlace(ObjectHandle object);

  /// Whether a GTK 3 field is one to search with.
  [[nodiscard]] bool hasSearchIcon(const ObjectHandle& object, const Properties& properties);

 private:
  [[nodiscard]] std::vector<Ref> shownChildren(const ObjectHandle& object,
                                               const Properties& properties);
  [[nodiscard]] std::optional<Element> openerIn(const ObjectHandle& menu,
                                                const Properties& properties);
  [[nodiscard]] std::vector<Ref> inPopups(const ObjectHandle& window);
  [[nodiscard]] bool isDetachedMenu(const ObjectHandle& menu);

  Reader& reader_;
  Notifications& notifications_;
};

}  // namespace tarqo::lnx::atspi
