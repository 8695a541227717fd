#include "tests/platform/mac/standin/ax_observers.h"

#include <algorithm>
#include <mutex>
#include <set>

#include "tests/platform/mac/standin/ax_element.h"
#include "tests/platform/mac/standin/desktop_elements.h"
#include "tests/platform/mac/standin/faults.h"

namespace standin {
namespace {

class Source final : public Object {
 public:
  [[nodiscard]] CFTypeID type() const override { return typeNamed("CFRunLoopSource"); }
  [[nodiscard]] std::string description() const override { return "a source"; }
};

class RunLoop final : public Object {
 public:
  [[nodiscard]] CFTypeID type() const override { return typeNamed("CFRunLoop"); }
  [[nodiscard]] std::string description() const override { return "the main loop"; }
};

struct Subscription {
  Owned element;
  std::string notification;
  void* context;
};

class AxObserver final : public Object {
 public:
  AxObserver(pid_t process, AXObserverCallback call) : pid_(process), callback_(call) {}
  [[nodiscard]] CFTypeID type() const override { return typeNamed("AXObserver"); }
  [[nodiscard]] std::string description() const override { return "an observer"; }
  void end() override;

  [[nodiscard]] pid_t pid() const { return pid_; }
  [[nodiscard]] AXObserverCallback callback() const { return callback_; }
  [[nodiscard]] Source* source() const { return source_; }
  std::vector<Subscription> subscriptions;
  DesktopObserver desktop;  ///< Empty for a scripted application.

 private:
  pid_t pid_;
  AXObserverCallback callback_;
  Source* source_ = Heap::instance().make<Source>();
};

/// The main loop's sources and the living observers, which two threads share.
struct Loop {
  static Loop& instance() {
    static Loop* const loop = new Loop();
    return *loop;
  }
  std::mutex lock;
  std::set<const Source*> sources;
  std::vector<AxObserver*> observers;
};

void AxObserver::end() {
  {
    // As the system does, so that a source left behind does no harm.
    const std::lock_guard guard(Loop::instance().lock);
    Loop::instance().sources.erase(source_);
    std::erase(Loop::instance().observers, this);
  }
  desktop.end();
  subscriptions.clear();
  CFRelease(toRef<CFTypeRef>(source_));
}

void checkLoop(CFRunLoopRef loop, CFRunLoopMode mode) {
  if (loop != CFRunLoopGetMain() || !CFEqual(mode, kCFRunLoopDefaultMode)) {
    complain("a source of another loop or mode");
  }
}

}  // namespace

std::vector<Delivery> deliveriesOf(const std::string& notification,
                                   const std::function<bool(CFTypeRef element)>& concerns) {
  std::vector<Delivery> deliveries;
  // Let go of outside the lock, which the end of an observer takes.
  std::vector<tarqo::mac::CfRef<AXObserverRef>> all;
  Loop& loop = Loop::instance();
  const std::lock_guard guard(loop.lock);
  for (AxObserver* observer : loop.observers) {
    if (!loop.sources.contains(observer->source()) || !Heap::instance().retainIfAlive(*observer)) {
      continue;
    }
    const auto& kept = all.emplace_back(tarqo::mac::adopt(toRef<AXObserverRef>(observer)));
    for (const Subscription& each : observer->subscriptions) {
      if (each.notification == notification && concerns(each.element.get())) {
        deliveries.push_back({kept, observer->callback(), each.context});
      }
    }
  }
  return deliveries;
}

void deliver(const Delivery& delivery, AXUIElementRef sender, const std::string& notification) {
  const Owned name = text(notification);
  delivery.callback(delivery.observer.get(), sender, static_cast<CFStringRef>(name.get()),
                    delivery.context);
}

std::size_t sourcesOfObservers() {
  const std::lock_guard guard(Loop::instance().lock);
  return Loop::instance().sources.size();
}

void forgetObservers() {
  const std::lock_guard guard(Loop::instance().lock);
  Loop::instance().sources.clear();
  Loop::instance().observers.clear();
}

}  // namespace standin

using namespace standin;

extern "C" {

const CFRunLoopMode kCFRunLoopDefaultMode = CFSTR("kCFRunLoopDefaultMode");

CFRunLoopRef CFRunLoopGetMain(void) {
  static RunLoop* loop = Heap::instance().makeConstant<RunLoop>();
  return toRef<CFRunLoopRef>(loop);
}
void CFRunLoopAddSource(CFRunLoopRef loop, CFRunLoopSourceRef source, CFRunLoopMode mode) {
  checkLoop(loop, mode);
  const std::lock_guard guard(Loop::instance().lock);
  Loop::instance().sources.insert(&as<Source>(source, "CFRunLoopAddSource"));
}
void CFRunLoopRemoveSource(CFRunLoopRef loop, CFRunLoopSourceRef source, CFRunLoopMode mode) {
  checkLoop(loop, mode);
  const std::lock_guard guard(Loop::instance().lock);
  Loop::instance().sources.erase(&as<Source>(source, "CFRunLoopRemoveSource"));
}

AXError AXObserverCreate(pid_t pid, AXObserverCallback callback, AXObserverRef* observer) {
  if (const Fault fault = Faults::instance().next("AXObserverCreate"); fault.fails()) {
    return fault.error(kAXErrorCannotComplete);
  }
  const Applications& all = Applications::instance();
  if (all.observerError != kAXErrorSuccess || all.observerIsNull) {
    return all.observerError;
  }
  DesktopObserver desktop;
  if (hasDesktop() && !desktop.begin(pid)) {
    return kAXErrorCannotComplete;
  }
  AxObserver* made = Heap::instance().make<AxObserver>(pid, callback);
  made->desktop = std::move(desktop);
  const std::lock_guard guard(Loop::instance().lock);
  Loop::instance().observers.push_back(made);
  *observer = toRef<AXObserverRef>(made);
  return kAXErrorSuccess;
}

AXError AXObserverAddNotification(AXObserverRef observer, AXUIElementRef element,
                                  CFStringRef notification, void* context) {
  if (const Fault fault = Faults::instance().next("AXObserverAddNotification"); fault.fails()) {
    return fault.error(kAXErrorCannotComplete);
  }
  const std::string name = nameOf(notification);
  auto& its = as<AxObserver>(observer, "AXObserverAddNotification");
  auto& asked = as<AxElement>(element, "AXObserverAddNotification");
  auto* scripted = dynamic_cast<ScriptedElement*>(&asked);
  const AXError error =
      scripted != nullptr ? scripted->subscribe(name) : its.desktop.subscribe(asked, name);
  if (error != kAXErrorSuccess) {
    return error;
  }
  const std::lock_guard guard(Loop::instance().lock);
  for (const Subscription& each : its.subscriptions) {
    if (CFEqual(each.element.get(), element) && each.notification == name) {
      return kAXErrorNotificationAlreadyRegistered;
    }
  }
  its.subscriptions.push_back({Owned::retain(element), name, context});
  return kAXErrorSuccess;
}

CFRunLoopSourceRef AXObserverGetRunLoopSource(AXObserverRef observer) {
  return toRef<CFRunLoopSourceRef>(as<AxObserver>(observer, "AXObserverGetRunLoopSource").source());
}

}  // extern "C"
