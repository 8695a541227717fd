#include "platform/mac/mac_accessibility.h"

#include "platform/mac/mac_cf_text.h"
#include "platform/mac/mac_cf_value.h"

namespace tarqo::mac {
namespace {

CfRef<CFArrayRef> makeNames(std::span<const std::string_view> names) {
  std::vector<CfRef<CFStringRef>> texts;
  std::vector<const void*> lent;
  for (const std::string_view name : names) {
    texts.push_back(makeString(name));
    if (!texts.back()) {
      return {};
    }
    lent.push_back(texts.back().get());
  }
  return adopt(CFArrayCreate(nullptr, lent.data(), static_cast<CFIndex>(lent.size()),
                             &kCFTypeArrayCallBacks));
}

std::optional<Pid> processOf(AXUIElementRef reference) {
  pid_t pid = 0;
  return AXUIElementGetPid(reference, &pid) == kAXErrorSuccess ? std::optional<Pid>(pid)
                                                               : std::nullopt;
}

}  // namespace

Element MacAccessibility::application(Pid pid, Duration messagingTimeout) {
  messagingTimeout_ = messagingTimeout;
  return makeElement(adopt(AXUIElementCreateApplication(pid)), messagingTimeout);
}

std::optional<Value> MacAccessibility::attribute(const Element& element, std::string_view name) {
  const MacElement* ours = macElement(element);
  const CfRef<CFStringRef> attribute = makeString(name);
  if (ours == nullptr || !attribute) {
    return std::nullopt;
  }
  CfRef<CFTypeRef> value;
  const AXError error =
      AXUIElementCopyAttributeValue(ours->reference(), attribute.get(), value.out());
  std::optional<Value> read =
      error == kAXErrorSuccess ? valueOf(value.get(), ours->messagingTimeout()) : std::nullopt;
  if (name == "AXChildren") {
    webTrees_.listed(*ours, error, read);
  }
  return read;
}

std::vector<std::optional<Value>> MacAccessibility::attributes(
    const Element& element, std::span<const std::string_view> names) {
  const MacElement* ours = macElement(element);
  const CfRef<CFArrayRef> wanted = makeNames(names);
  if (ours == nullptr || !wanted) {
    return {};
  }
  // No options: an attribute that fails leaves an error in its slot and does not end the reading.
  constexpr AXCopyMultipleAttributeOptions kNoOptions = 0;
  CfRef<CFArrayRef> read;
  const AXError error = AXUIElementCopyMultipleAttributeValues(ours->reference(), wanted.get(),
                                                               kNoOptions, read.out());
  if (error != kAXErrorSuccess || asArray(read.get()) == nullptr) {
    return {};
  }
  std::vector<std::optional<Value>> values(names.size());
  const auto count = static_cast<std::size_t>(CFArrayGetCount(read.get()));
  for (std::size_t i = 0; i < values.size() && i < count; ++i) {
    values[i] = valueOf(CFArrayGetValueAtIndex(read.get(), static_cast<CFIndex>(i)),
                        ours->messagingTimeout());
  }
  webTrees_.described(*ours, names, values);
  return values;
}

std::vector<std::string> MacAccessibility::actionNames(const Element& element) {
  const MacElement* ours = macElement(element);
  if (ours == nullptr) {
    return {};
  }
  CfRef<CFArrayRef> read;
  if (AXUIElementCopyActionNames(ours->reference(), read.out()) != kAXErrorSuccess ||
      asArray(read.get()) == nullptr) {
    return {};
  }
  std::vector<std::string> names;
  for (CFIndex i = 0; i < CFArrayGetCount(read.get()); ++i) {
    std::optional<std::string> name = textIn(CFArrayGetValueAtIndex(read.get(), i));
    if (!name) {
      return {};
    }
    names.push_back(*std::move(name));
  }
  return names;
}

Performed MacAccessibility::perform(const Element& element, std::string_view action) {
  const MacElement* ours = macElement(element);
  const CfRef<CFStringRef> name = makeString(action);
  if (ours == nullptr || !name) {
    return Performed::refused;
  }
  switch (AXUIElementPerformAction(ours->reference(), name.get())) {
    case kAXErrorSuccess:
      return Performed::taken;
    case kAXErrorCannotComplete:
      return Performed::pending;
    default:  // Apple adds errors; each of them says that nothing was done.
      return Performed::refused;
  }
}

bool MacAccessibility::isEndangeredByKeys(Pid /*pid*/) { return false; }

// A dialog that came up is its application's focused window here, which is the one observed.
std::optional<Element> MacAccessibility::otherKeyWindow(const Element& /*window*/) {
  return std::nullopt;
}

bool MacAccessibility::takesTextByKeys(const Element& /*element*/) { return false; }

std::optional<Size> MacAccessibility::wheelStep(const Element& /*element*/) { return std::nullopt; }

bool MacAccessibility::set(const Element& element, std::string_view name, const Value& value) {
  const MacElement* ours = macElement(element);
  const CfRef<CFStringRef> attribute = makeString(name);
  const CfRef<CFTypeRef> object = objectOf(value);
  return ours != nullptr && attribute && object &&
         AXUIElementSetAttributeValue(ours->reference(), attribute.get(), object.get()) ==
             kAXErrorSuccess;
}

bool MacAccessibility::isSettable(const Element& element, std::string_view name) {
  const MacElement* ours = macElement(element);
  const CfRef<CFStringRef> attribute = makeString(name);
  if (ours == nullptr || !attribute) {
    return false;
  }
  Boolean settable = 0;
  return AXUIElementIsAttributeSettable(ours->reference(), attribute.get(), &settable) ==
             kAXErrorSuccess &&
         settable != 0;
}

std::optional<Element> MacAccessibility::elementAt(Point point) {
  if (!systemWide_) {
    systemWide_ = adopt(AXUIElementCreateSystemWide());
  }
  if (!systemWide_) {
    return std::nullopt;
  }
  // Through the system-wide element, because an application's own would find what lies behind
  // another application's window. Any process may be asked then, and the limits of our references
  // do not hold for its elements.
  limitMessaging(systemWide_.get(), messagingTimeout_);
  CfRef<AXUIElementRef> found;
  const AXError error = AXUIElementCopyElementAtPosition(
      systemWide_.get(), static_cast<float>(point.x), static_cast<float>(point.y), found.out());
  if (error != kAXErrorSuccess || !found) {
    return std::nullopt;
  }
  return makeElement(std::move(found), messagingTimeout_);
}

std::optional<Pid> MacAccessibility::pidOf(const Element& element) {
  const MacElement* ours = macElement(element);
  return ours == nullptr ? std::nullopt : processOf(ours->reference());
}

std::unique_ptr<Observer> MacAccessibility::observe(Pid pid, NotificationCallback callback) {
  return observers_.observe(pid, std::move(callback));
}

std::unique_ptr<TreeRead> MacAccessibility::readTree(const Element& /*root*/,
                                                     const TreeReadLimits& /*limits*/) {
  return nullptr;
}

}  // namespace tarqo::mac
