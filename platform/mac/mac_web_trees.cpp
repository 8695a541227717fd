#include "platform/mac/mac_web_trees.h"

#include <string>

#include "platform/mac/mac_cf_text.h"

namespace tarqo::mac {
namespace {

bool isEmpty(AXError error, const std::optional<Value>& children) {
  if (!children) {
    // Other errors say that the application did not answer, not that there is nothing.
    return error == kAXErrorSuccess || error == kAXErrorNoValue;
  }
  const auto* list = children->as<Values>();
  return list != nullptr && list->empty();
}

/// Whether the application may have taken it: a late answer is not a refusal.
bool switchOn(AXUIElementRef application, std::string_view name) {
  const CfRef<CFStringRef> attribute = makeString(name);
  if (!attribute) {
    return false;
  }
  const AXError error = AXUIElementSetAttributeValue(application, attribute.get(), kCFBooleanTrue);
  return error == kAXErrorSuccess || error == kAXErrorCannotComplete;
}

/// The second is what VoiceOver sets, and it makes some applications move their windows
/// differently. The first is for every other client, and older versions of Chromium do not know it.
void askForTrees(AXUIElementRef application) {
  if (!switchOn(application, "AXManualAccessibility")) {
    switchOn(application, "AXEnhancedUserInterface");
  }
}

}  // namespace

void MacWebTrees::described(const MacElement& element, std::span<const std::string_view> names,
                            const std::vector<std::optional<Value>>& values) {
  for (std::size_t i = 0; i < names.size() && i < values.size(); ++i) {
    const auto* role = values[i] ? values[i]->as<std::string>() : nullptr;
    if (names[i] == "AXRole" && role != nullptr && *role == "AXWebArea") {
      webArea_ = retain(element.reference());
    }
  }
}

void MacWebTrees::listed(const MacElement& element, AXError error,
                         const std::optional<Value>& children) {
  if (!webArea_ || !isEmpty(error, children) || !CFEqual(webArea_.get(), element.reference())) {
    return;
  }
  pid_t pid = 0;
  if (AXUIElementGetPid(element.reference(), &pid) != kAXErrorSuccess ||
      !asked_.insert(pid).second) {
    return;
  }
  const CfRef<AXUIElementRef> application = adopt(AXUIElementCreateApplication(pid));
  if (!application) {
    return;
  }
  limitMessaging(application.get(), element.messagingTimeout());
  askForTrees(application.get());
}

}  // namespace tarqo::mac
