#include "tests/platform/mac/standin/accessibility.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <set>

namespace standin {
namespace {

constexpr pid_t kEveryProcess = 0;

class AxElement final : public Object {
 public:
  AxElement(pid_t pid, int number) : pid_(pid), number_(number) {}
  [[nodiscard]] CFTypeID type() const override { return typeNamed("AXUIElement"); }
  [[nodiscard]] std::string description() const override {
    return "element " + std::to_string(pid_) + "/" + std::to_string(number_);
  }
  [[nodiscard]] bool equals(const Object& other) const override {
    const auto* element = dynamic_cast<const AxElement*>(&other);
    return element != nullptr && element->key() == key();
  }
  [[nodiscard]] pid_t pid() const { return pid_; }
  [[nodiscard]] int number() const { return number_; }
  [[nodiscard]] std::pair<pid_t, int> key() const { return {pid_, number_}; }
  float seconds = 0;

 private:
  pid_t pid_;
  int number_;
};

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

class AxObserver final : public Object {
 public:
  AxObserver(pid_t process, AXObserverCallback call) : pid_(process), callback_(call) {}
  [[nodiscard]] CFTypeID type() const override { return typeNamed("AXObserver"); }
  [[nodiscard]] std::string description() const override { return "an observer"; }
  void end() override;

  [[nodiscard]] pid_t pid() const { return pid_; }
  [[nodiscard]] AXObserverCallback callback() const { return callback_; }
  [[nodiscard]] Source* source() const { return source_; }
  struct Subscription {
    std::pair<pid_t, int> node;
    std::string notification;
    void* context;
  };
  std::vector<Subscription> subscriptions;

 private:
  pid_t pid_;
  AXObserverCallback callback_;
  Source* source_ = Heap::instance().make<Source>();
};

/// The main loop's sources and the living observers, which two threads share.
struct Loop {
  static Loop& instance() {
    static Loop loop;
    return loop;
  }
  std::mutex lock;
  std::set<Source*> sources;
  std::vector<AxObserver*> observers;
};

void AxObserver::end() {
  // As the system does, so that a source left behind does no harm.
  const std::lock_guard guard(Loop::instance().lock);
  Loop::instance().sources.erase(source_);
  std::erase(Loop::instance().observers, this);
  CFRelease(toRef<CFTypeRef>(source_));
}

AxElement& elementAt(AXUIElementRef reference, std::string_view user) {
  return as<AxElement>(reference, user);
}

float systemWideSeconds = 0;

Node& asked(AXUIElementRef reference, const std::string& what) {
  const AxElement& element = elementAt(reference, what);
  const float seconds = element.seconds > 0 ? element.seconds : systemWideSeconds;
  Applications::instance().calls.push_back({what, element.number(), seconds});
  return Applications::instance().node(element.pid(), element.number());
}

AXError give(const Answer& answer, CFTypeRef* value) {
  if (answer.value) {
    *value = CFRetain(answer.value.get());
  }
  return answer.error;
}

template <typename T>
T found(const std::map<std::string, T>& answers, const std::string& name, T otherwise) {
  const auto answer = answers.find(name);
  return answer == answers.end() ? otherwise : answer->second;
}

}  // namespace

Applications& Applications::instance() {
  static Applications applications;
  return applications;
}

void Applications::reset() {
  *this = Applications();
  systemWideSeconds = 0;
  const std::lock_guard guard(Loop::instance().lock);
  Loop::instance().sources.clear();
  Loop::instance().observers.clear();
}

Node& Applications::node(pid_t pid, int number) { return nodes_[{pid, number}]; }

Owned Applications::element(pid_t pid, int number) {
  return Owned::adopt(toRef<CFTypeRef>(Heap::instance().make<AxElement>(pid, number)));
}

std::vector<std::string> Applications::asked() const {
  std::vector<std::string> result;
  for (const Call& call : calls) {
    result.push_back(call.what);
  }
  return result;
}

int Applications::notify(pid_t pid, int number, const std::string& notification) {
  struct Delivery {
    tarqo::mac::CfRef<AXObserverRef> observer;
    AXObserverCallback callback = nullptr;
    void* context = nullptr;
  };
  std::vector<Delivery> deliveries;
  {
    Loop& loop = Loop::instance();
    const std::lock_guard guard(loop.lock);
    for (AxObserver* observer : loop.observers) {
      for (const auto& each : observer->subscriptions) {
        const bool concerned =
            each.node == std::pair(pid, number) || each.node == std::pair(pid, 1);
        if (concerned && each.notification == notification &&
            loop.sources.contains(observer->source())) {
          // The loop keeps an observer alive while it calls back.
          deliveries.push_back({tarqo::mac::retain(toRef<AXObserverRef>(observer)),
                                observer->callback(), each.context});
        }
      }
    }
  }
  if (beforeDelivery) {
    beforeDelivery();
  }
  const Owned sender = element(pid, number);
  const Owned name = text(notification);
  for (const Delivery& each : deliveries) {
    each.callback(each.observer.get(), static_cast<AXUIElementRef>(sender.get()),
                  static_cast<CFStringRef>(name.get()), each.context);
  }
  return static_cast<int>(deliveries.size());
}

std::size_t Applications::sourcesOnTheLoop() const {
  const std::lock_guard guard(Loop::instance().lock);
  return Loop::instance().sources.size();
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
  EXPECT_EQ(loop, CFRunLoopGetMain());
  EXPECT_TRUE(CFEqual(mode, kCFRunLoopDefaultMode));
  const std::lock_guard guard(Loop::instance().lock);
  Loop::instance().sources.insert(&as<Source>(source, "CFRunLoopAddSource"));
}
void CFRunLoopRemoveSource(CFRunLoopRef loop, CFRunLoopSourceRef source, CFRunLoopMode mode) {
  EXPECT_EQ(loop, CFRunLoopGetMain());
  EXPECT_TRUE(CFEqual(mode, kCFRunLoopDefaultMode));
  const std::lock_guard guard(Loop::instance().lock);
  Loop::instance().sources.erase(&as<Source>(source, "CFRunLoopRemoveSource"));
}

CFTypeID AXUIElementGetTypeID(void) { return typeNamed("AXUIElement"); }
AXUIElementRef AXUIElementCreateApplication(pid_t pid) {
  return toRef<AXUIElementRef>(Heap::instance().make<AxElement>(pid, 1));
}
AXUIElementRef AXUIElementCreateSystemWide(void) {
  return toRef<AXUIElementRef>(Heap::instance().make<AxElement>(kEveryProcess, 0));
}

AXError AXUIElementSetMessagingTimeout(AXUIElementRef reference, float seconds) {
  if (seconds < 0) {
    return kAXErrorIllegalArgument;
  }
  AxElement& element = elementAt(reference, "AXUIElementSetMessagingTimeout");
  (element.pid() == kEveryProcess ? systemWideSeconds : element.seconds) = seconds;
  return kAXErrorSuccess;
}

AXError AXUIElementCopyAttributeValue(AXUIElementRef element, CFStringRef attribute,
                                      CFTypeRef* value) {
  const std::string name = nameOf(attribute);
  const Node& node = asked(element, "read " + name);
  return give(found(node.attributes, name, {kAXErrorAttributeUnsupported, {}}), value);
}

AXError AXUIElementCopyMultipleAttributeValues(AXUIElementRef element, CFArrayRef attributes,
                                               AXCopyMultipleAttributeOptions options,
                                               CFArrayRef* values) {
  EXPECT_EQ(options, 0u);
  std::string names;
  std::vector<Owned> slots;
  const Node& node = asked(element, "read many");
  for (CFIndex i = 0; i < CFArrayGetCount(attributes); ++i) {
    const std::string name =
        nameOf(static_cast<CFStringRef>(CFArrayGetValueAtIndex(attributes, i)));
    names += (i == 0 ? "" : " ") + name;
    const Answer answer = found(node.attributes, name, {kAXErrorAttributeUnsupported, {}});
    const bool fine = answer.error == kAXErrorSuccess && answer.value;
    slots.push_back(fine ? answer.value : axError(answer.error));
  }
  Applications::instance().calls.back().what += ": " + names;
  CFTypeRef result = nullptr;
  const AXError error = give(node.batch.value_or(Answer{kAXErrorSuccess, array(slots)}), &result);
  *values = static_cast<CFArrayRef>(result);
  return error;
}

AXError AXUIElementIsAttributeSettable(AXUIElementRef element, CFStringRef attribute,
                                       Boolean* settable) {
  const std::string name = nameOf(attribute);
  const Node& node = asked(element, "settable " + name);
  const Answer answer = found(node.settable, name, {kAXErrorAttributeUnsupported, {}});
  if (answer.value) {
    *settable = CFBooleanGetValue(static_cast<CFBooleanRef>(answer.value.get()));
  }
  return answer.error;
}

AXError AXUIElementSetAttributeValue(AXUIElementRef element, CFStringRef attribute,
                                     CFTypeRef value) {
  const std::string name = nameOf(attribute);
  Node& node = asked(element, "set " + name);
  node.taken[name] = Owned::retain(value);
  return found(node.takes, name, kAXErrorAttributeUnsupported);
}

AXError AXUIElementCopyActionNames(AXUIElementRef element, CFArrayRef* names) {
  CFTypeRef result = nullptr;
  const AXError error = give(asked(element, "actions").actionNames, &result);
  if (result != nullptr) {
    *names = static_cast<CFArrayRef>(result);
  }
  return error;
}

AXError AXUIElementPerformAction(AXUIElementRef element, CFStringRef action) {
  const std::string name = nameOf(action);
  return found(asked(element, "perform " + name).actions, name, kAXErrorActionUnsupported);
}

AXError AXUIElementCopyElementAtPosition(AXUIElementRef application, float x, float y,
                                         AXUIElementRef* element) {
  EXPECT_EQ(elementAt(application, "hit").pid(), kEveryProcess);
  asked(application, "hit");
  Applications& all = Applications::instance();
  all.hitPoint = {x, y};
  if (all.hit) {
    *element = static_cast<AXUIElementRef>(CFRetain(all.hit.get()));
  }
  return all.hitError;
}

AXError AXUIElementGetPid(AXUIElementRef reference, pid_t* pid) {
  const AxElement& element = elementAt(reference, "AXUIElementGetPid");
  const AXError error = Applications::instance().node(element.pid(), element.number()).pidError;
  if (error == kAXErrorSuccess) {
    *pid = element.pid();
  }
  return error;
}

CFTypeID AXValueGetTypeID(void) { return typeNamed("AXValue"); }
AXValueRef AXValueCreate(AXValueType type, const void* value) {
  const std::size_t bytes = type == kAXValueTypeAXError  ? sizeof(AXError)
                            : type == kAXValueTypeCGRect ? sizeof(CGRect)
                                                         : sizeof(CGPoint);
  return toRef<AXValueRef>(
      Heap::instance().make<AxValue>(type, std::string(static_cast<const char*>(value), bytes)));
}
AXValueType AXValueGetType(AXValueRef value) { return as<AxValue>(value, "AXValueGetType").kind(); }
Boolean AXValueGetValue(AXValueRef value, AXValueType type, void* out) {
  const AxValue& its = as<AxValue>(value, "AXValueGetValue");
  if (its.kind() != type) {
    return 0;
  }
  std::copy(its.bytes().begin(), its.bytes().end(), static_cast<char*>(out));
  return 1;
}

AXError AXObserverCreate(pid_t pid, AXObserverCallback callback, AXObserverRef* observer) {
  const Applications& all = Applications::instance();
  if (all.observerError != kAXErrorSuccess || all.observerIsNull) {
    return all.observerError;
  }
  AxObserver* made = Heap::instance().make<AxObserver>(pid, callback);
  const std::lock_guard guard(Loop::instance().lock);
  Loop::instance().observers.push_back(made);
  *observer = toRef<AXObserverRef>(made);
  return kAXErrorSuccess;
}

AXError AXObserverAddNotification(AXObserverRef observer, AXUIElementRef element,
                                  CFStringRef notification, void* context) {
  const std::string name = nameOf(notification);
  const AXError error =
      found(asked(element, "subscribe " + name).subscriptionErrors, name, AXError{kAXErrorSuccess});
  if (error != kAXErrorSuccess) {
    return error;
  }
  AxObserver& its = as<AxObserver>(observer, "AXObserverAddNotification");
  const auto key = elementAt(element, "AXObserverAddNotification").key();
  const std::lock_guard guard(Loop::instance().lock);
  for (const auto& each : its.subscriptions) {
    if (each.node == key && each.notification == name) {
      return kAXErrorNotificationAlreadyRegistered;
    }
  }
  its.subscriptions.push_back({key, name, context});
  return kAXErrorSuccess;
}

CFRunLoopSourceRef AXObserverGetRunLoopSource(AXObserverRef observer) {
  return toRef<CFRunLoopSourceRef>(as<AxObserver>(observer, "AXObserverGetRunLoopSource").source());
}

}  // extern "C"
