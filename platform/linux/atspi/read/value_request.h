// The properties of one object while they are being requested, and the requests that depend on what
// kind of object it is.
#pragma once

#include <functional>
#include <memory>

#include "platform/linux/atspi/translate/properties.h"
#include "platform/linux/atspi/wire/bus.h"

namespace tarqo::lnx::atspi {

/// The requests under way for one object.
struct PropertyRequest {
  Batch& batch;
  Ref ref;
  Toolkit toolkit = Toolkit::other;
  PropertySet wanted{};
  bool onlyShownChildren = false;
  std::shared_ptr<Properties> properties{};
  std::function<void()> done{};
  int open = 0;  ///< Unanswered calls of this round.
  int round = 0;
};

/// Counts an answer in, and begins the next round after the last answer of one.
void answered(const std::shared_ptr<PropertyRequest>& request);

/// Requests the names of the actions, where they have a meaning here.
void requestActions(const std::shared_ptr<PropertyRequest>& request);

/// Requests the untranslated names that the list of actions did not give.
void requestActionNames(const std::shared_ptr<PropertyRequest>& request);

/// Requests the text or the number that the value of the object's role is made of.
void requestValue(const std::shared_ptr<PropertyRequest>& request);

/// Requests the name of what labels a field, where the field is not named itself.
void requestLabel(const std::shared_ptr<PropertyRequest>& request);

/// Requests the address of a web page.
void requestAddress(const std::shared_ptr<PropertyRequest>& request);

}  // namespace tarqo::lnx::atspi
