// Requests the properties of objects, in up to three rounds: first what an object is, then what is
// worth requesting of such an object, then what the answers left open.
#pragma once

#include <functional>
#include <memory>

#include "platform/linux/atspi/translate/properties.h"
#include "platform/linux/atspi/wire/bus.h"

namespace tarqo::lnx::atspi {

struct PropertyQuery {
  Ref ref;
  Toolkit toolkit = Toolkit::other;
  PropertySet wanted;
  /// Leaves out children that are not shown, where listing the others costs less: what a long
  /// list has scrolled away.
  bool onlyShownChildren = false;
};

/// Adds to a batch the requests for those of the wanted properties that are not known yet. `done`
/// is called from the batch's run when all have been answered; never when the batch ends before.
/// `properties` is kept alive until then.
void requestProperties(Batch& batch, const PropertyQuery& query,
                       std::shared_ptr<Properties> properties, std::function<void()> done);

}  // namespace tarqo::lnx::atspi
