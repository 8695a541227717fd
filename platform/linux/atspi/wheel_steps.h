// How far one click of the wheel moves content, as each toolkit does it. X11 passes clicks on, not
// distances.
//
// Worker thread only.
#pragma once

#include <optional>

#include "platform/geometry.h"
#include "platform/linux/atspi/read/reader.h"
#include "platform/linux/atspi/wire/object_handle.h"

namespace tarqo::lnx::atspi {

class WheelSteps {
 public:
  /// Kept, and outlives this.
  explicit WheelSteps(Reader& reader) : reader_(reader) {}

  /// What one click moves what the object lies in, sideways and up or down, in points; empty for a
  /// toolkit that is not known, and where nothing that scrolls is around the object. Waits for at
  /// most one messaging time-out.
  [[nodiscard]] std::optional<Size> of(const ObjectHandle& object);

 private:
  [[nodiscard]] std::optional<Size> gtkStep(const ObjectHandle& object);

  Reader& reader_;
};

/// GTK moves an area by so much of its length.
[[nodiscard]] double gtkWheelStep(double length);

}  // namespace tarqo::lnx::atspi
