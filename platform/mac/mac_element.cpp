#include "platform/mac/mac_element.h"

#include <algorithm>
#include <chrono>

namespace tarqo::mac {

MacElement::MacElement(CfRef<AXUIElementRef> reference, Duration messagingTimeout)
    : reference_(std::move(reference)), messagingTimeout_(messagingTimeout) {
  limitMessaging(reference_.get(), messagingTimeout);
}

bool MacElement::same(const ElementObject& other) const {
  const auto* element = dynamic_cast<const MacElement*>(&other);
  return element != nullptr && reference_ && element->reference_ &&
         CFEqual(reference(), element->reference()) != 0;
}

Element makeElement(CfRef<AXUIElementRef> reference, Duration messagingTimeout) {
  return Element(std::make_shared<const MacElement>(std::move(reference), messagingTimeout));
}

const MacElement* macElement(const Element& element) {
  const auto* ours = dynamic_cast<const MacElement*>(&element.object());
  return ours == nullptr || ours->reference() == nullptr ? nullptr : ours;
}

void limitMessaging(AXUIElementRef reference, Duration messagingTimeout) {
  if (reference == nullptr) {
    return;
  }
  // 0 would stand for the system's own limit of some seconds, and less is refused.
  const Duration limit = std::max<Duration>(messagingTimeout, std::chrono::milliseconds(1));
  AXUIElementSetMessagingTimeout(reference, std::chrono::duration<float>(limit).count());
}

}  // namespace tarqo::mac
