// Observers of the Accessibility API and their sources on the main loop.
#pragma once

#include <ApplicationServices/ApplicationServices.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "tests/platform/mac/standin/core_foundation.h"

namespace standin {

/// A notification on its way: the loop keeps the observer alive while it calls back.
struct Delivery {
  tarqo::mac::CfRef<AXObserverRef> observer;
  AXObserverCallback callback = nullptr;
  void* context = nullptr;
};

/// Of the observers whose source is on the loop, those that subscribed to this of an element that
/// `concerns` accepts.
[[nodiscard]] std::vector<Delivery> deliveriesOf(
    const std::string& notification, const std::function<bool(CFTypeRef element)>& concerns);

void deliver(const Delivery& delivery, AXUIElementRef sender, const std::string& notification);

[[nodiscard]] std::size_t sourcesOfObservers();
void forgetObservers();

}  // namespace standin
