// The calls of the Accessibility API, but for those of observers.

#include <algorithm>

#include "tests/platform/mac/standin/ax_element.h"
#include "tests/platform/mac/standin/desktop_elements.h"
#include "tests/platform/mac/standin/faults.h"

using namespace standin;

namespace {

AxElement& elementAt(AXUIElementRef reference, std::string_view user) {
  return as<AxElement>(reference, user);
}

AXError give(const Answer& answer, CFTypeRef* value) {
  if (answer.value) {
    *value = CFRetain(answer.value.get());
  }
  return answer.error;
}

/// What a switch has the call answer instead of what the element would.
std::optional<AXError> fault(const char* call) {
  const Fault next = Faults::instance().next(call);
  return next.fails() ? std::optional(next.error(kAXErrorCannotComplete)) : std::nullopt;
}

}  // namespace

extern "C" {

CFTypeID AXUIElementGetTypeID(void) { return typeNamed("AXUIElement"); }
AXUIElementRef AXUIElementCreateApplication(pid_t pid) {
  if (Faults::instance().next("AXUIElementCreateApplication").fails()) {
    return nullptr;
  }
  return hasDesktop() ? desktopApplication(pid)
                      : toRef<AXUIElementRef>(Heap::instance().make<ScriptedElement>(pid, 1));
}
AXUIElementRef AXUIElementCreateSystemWide(void) {
  if (Faults::instance().next("AXUIElementCreateSystemWide").fails()) {
    return nullptr;
  }
  return toRef<AXUIElementRef>(Heap::instance().make<SystemWide>());
}

AXError AXUIElementSetMessagingTimeout(AXUIElementRef reference, float seconds) {
  if (seconds < 0) {
    return kAXErrorIllegalArgument;
  }
  elementAt(reference, "AXUIElementSetMessagingTimeout").limit(seconds);
  return kAXErrorSuccess;
}

AXError AXUIElementCopyAttributeValue(AXUIElementRef element, CFStringRef attribute,
                                      CFTypeRef* value) {
  if (const auto error = fault("AXUIElementCopyAttributeValue")) {
    return *error;
  }
  return give(elementAt(element, "AXUIElementCopyAttributeValue").read(nameOf(attribute)), value);
}

AXError AXUIElementCopyMultipleAttributeValues(AXUIElementRef element, CFArrayRef attributes,
                                               AXCopyMultipleAttributeOptions options,
                                               CFArrayRef* values) {
  if (const auto error = fault("AXUIElementCopyMultipleAttributeValues")) {
    return *error;
  }
  if (options != 0) {
    complain("a reading that ends with the first error");
  }
  std::vector<std::string> names;
  for (CFIndex i = 0; i < CFArrayGetCount(attributes); ++i) {
    names.push_back(nameOf(static_cast<CFStringRef>(CFArrayGetValueAtIndex(attributes, i))));
  }
  CFTypeRef result = nullptr;
  const AXError error =
      give(elementAt(element, "AXUIElementCopyMultipleAttributeValues").readMany(names), &result);
  *values = static_cast<CFArrayRef>(result);
  return error;
}

AXError AXUIElementIsAttributeSettable(AXUIElementRef element, CFStringRef attribute,
                                       Boolean* settable) {
  if (const auto error = fault("AXUIElementIsAttributeSettable")) {
    return *error;
  }
  const Answer answer =
      elementAt(element, "AXUIElementIsAttributeSettable").settable(nameOf(attribute));
  if (answer.value) {
    *settable = CFBooleanGetValue(static_cast<CFBooleanRef>(answer.value.get()));
  }
  return answer.error;
}

AXError AXUIElementSetAttributeValue(AXUIElementRef element, CFStringRef attribute,
                                     CFTypeRef value) {
  if (const auto error = fault("AXUIElementSetAttributeValue")) {
    return *error;
  }
  return elementAt(element, "AXUIElementSetAttributeValue").set(nameOf(attribute), value);
}

AXError AXUIElementCopyActionNames(AXUIElementRef element, CFArrayRef* names) {
  if (const auto error = fault("AXUIElementCopyActionNames")) {
    return *error;
  }
  CFTypeRef result = nullptr;
  const AXError error =
      give(elementAt(element, "AXUIElementCopyActionNames").actionNames(), &result);
  if (result != nullptr) {
    *names = static_cast<CFArrayRef>(result);
  }
  return error;
}

AXError AXUIElementPerformAction(AXUIElementRef element, CFStringRef action) {
  if (const auto error = fault("AXUIElementPerformAction")) {
    return *error;
  }
  return elementAt(element, "AXUIElementPerformAction").perform(nameOf(action));
}

AXError AXUIElementCopyElementAtPosition(AXUIElementRef application, float x, float y,
                                         AXUIElementRef* element) {
  if (const auto error = fault("AXUIElementCopyElementAtPosition")) {
    return *error;
  }
  if (dynamic_cast<SystemWide*>(&elementAt(application, "hit")) == nullptr) {
    complain("a hit test of one application");
  }
  if (hasDesktop()) {
    return desktopHit(x, y, element);
  }
  Applications& all = Applications::instance();
  all.calls.push_back({"hit", 0, systemWideSeconds()});
  all.hitPoint = {x, y};
  if (all.hit) {
    *element = static_cast<AXUIElementRef>(CFRetain(all.hit.get()));
  }
  return all.hitError;
}

AXError AXUIElementGetPid(AXUIElementRef reference, pid_t* pid) {
  const AxElement& element = elementAt(reference, "AXUIElementGetPid");
  const AXError error = element.pidError();
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

}  // extern "C"
