// Elements of the Accessibility API.
#pragma once

#include <ApplicationServices/ApplicationServices.h>

#include "platform/accessibility.h"
#include "platform/mac/mac_cf.h"

namespace tarqo::mac {

[[nodiscard]] inline AXUIElementRef asElement(CFTypeRef object) {
  return castTo<AXUIElementRef>(object, AXUIElementGetTypeID());
}

/// One reference to an element, with the messaging time-out that it was given.
class MacElement final : public ElementObject {
 public:
  /// Gives the reference its time-out: the system keeps one for each reference, not for each
  /// element, so what is reached from an application element does not inherit it. Costs no round
  /// trip.
  ///
  /// Without a reference, the element of nothing: every read finds nothing.
  MacElement(CfRef<AXUIElementRef> reference, Duration messagingTimeout);

  [[nodiscard]] bool same(const ElementObject& other) const override;

  [[nodiscard]] AXUIElementRef reference() const { return reference_.get(); }
  [[nodiscard]] Duration messagingTimeout() const { return messagingTimeout_; }

 private:
  CfRef<AXUIElementRef> reference_;
  Duration messagingTimeout_;
};

[[nodiscard]] Element makeElement(CfRef<AXUIElementRef> reference, Duration messagingTimeout);

/// Null for an element of another backend and for that of nothing.
[[nodiscard]] const MacElement* macElement(const Element& element);

/// Limits how long calls through a reference wait; null is allowed. On the system-wide
/// element, also how long calls through all references without a limit of their own do.
void limitMessaging(AXUIElementRef reference, Duration messagingTimeout);

}  // namespace tarqo::mac
