#include "platform/mac/mac_observers.h"

#include <utility>

#include "platform/mac/mac_cf.h"
#include "platform/mac/mac_cf_text.h"
#include "platform/mac/mac_element.h"

namespace tarqo::mac {
namespace {

using Slot = MacObservers::Slot;

/// Main thread. What it is given is lent.
void onNotification(AXObserverRef observer, AXUIElementRef /*element*/, CFStringRef notification,
                    void* context) {
  auto* slot = static_cast<Slot*>(context);
  if (slot == nullptr) {
    return;
  }
  const std::lock_guard guard(slot->lock);
  // Another one when this notification was on its way while its observer was let go. The two cannot
  // be mistaken: the system keeps the one it calls for alive meanwhile.
  if (slot->observer != observer) {
    return;
  }
  try {
    slot->callback(textOf(notification));
  } catch (...) {  // Nothing may be thrown through the system's run loop.
  }
}

class MacObserver final : public Observer {
 public:
  MacObserver(CfRef<AXObserverRef> observer, Slot& slot)
      : observer_(std::move(observer)), slot_(slot) {
    CFRunLoopAddSource(CFRunLoopGetMain(), source(), kCFRunLoopDefaultMode);
  }
  MacObserver(const MacObserver&) = delete;
  MacObserver& operator=(const MacObserver&) = delete;

  ~MacObserver() override {
    CFRunLoopRemoveSource(CFRunLoopGetMain(), source(), kCFRunLoopDefaultMode);
    // Waits for a callback that is running; one that is about to start finds nothing.
    const std::lock_guard guard(slot_.lock);
    slot_.observer = nullptr;
    slot_.callback = nullptr;
    // Its subscriptions end with the observer, without a round trip for each.
  }

  bool add(const Element& element, std::string_view notification) override {
    const MacElement* ours = macElement(element);
    const CfRef<CFStringRef> name = makeString(notification);
    if (ours == nullptr || !name) {
      return false;
    }
    const AXError error =
        AXObserverAddNotification(observer_.get(), ours->reference(), name.get(), &slot_);
    return error == kAXErrorSuccess || error == kAXErrorNotificationAlreadyRegistered;
  }

 private:
  /// Lent by the observer.
  [[nodiscard]] CFRunLoopSourceRef source() const {
    return AXObserverGetRunLoopSource(observer_.get());
  }

  CfRef<AXObserverRef> observer_;
  Slot& slot_;
};

}  // namespace

std::unique_ptr<Observer> MacObservers::observe(Pid pid, NotificationCallback callback) {
  CfRef<AXObserverRef> observer;
  if (AXObserverCreate(pid, onNotification, observer.out()) != kAXErrorSuccess || !observer) {
    return nullptr;
  }
  Slot& slot = freeSlot();
  {
    const std::lock_guard guard(slot.lock);
    slot.observer = observer.get();
    slot.callback = std::move(callback);
  }
  return std::make_unique<MacObserver>(std::move(observer), slot);
}

MacObservers::Slot& MacObservers::freeSlot() {
  for (Slot& slot : slots_) {
    const std::lock_guard guard(slot.lock);
    if (slot.observer == nullptr) {
      return slot;
    }
  }
  return slots_.emplace_back();
}

}  // namespace tarqo::mac
