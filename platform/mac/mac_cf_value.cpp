#include "platform/mac/mac_cf_value.h"

#include <ApplicationServices/ApplicationServices.h>

#include <string>
#include <variant>
#include <vector>

#include "platform/mac/mac_cf_text.h"
#include "platform/mac/mac_element.h"

namespace tarqo::mac {
namespace {

// Attributes hold lists of elements or of lists of elements (the cells of a table's rows). Deeper
// ones are nobody's attribute and could exhaust the stack.
constexpr int kMaxListDepth = 8;

/// A structure of the Accessibility API; its type code has been asked for.
template <typename Structure>
std::optional<Structure> structureIn(AXValueRef value, AXValueType type) {
  Structure structure{};
  return AXValueGetValue(value, type, &structure) != 0 ? std::optional(structure) : std::nullopt;
}

std::optional<Value> structureOf(AXValueRef value) {
  const AXValueType type = AXValueGetType(value);
  if (type == kAXValueTypeAXError) {
    return std::nullopt;
  }
  if (type == kAXValueTypeCGPoint) {
    if (const auto point = structureIn<CGPoint>(value, type)) {
      return Value{Point{point->x, point->y}};
    }
  }
  if (type == kAXValueTypeCGSize) {
    if (const auto size = structureIn<CGSize>(value, type)) {
      return Value{Size{size->width, size->height}};
    }
  }
  return Value{OtherValue{}};
}

Value urlOf(CFURLRef url) {
  // An address may be relative to another; null when it cannot be made absolute.
  const CfRef<CFURLRef> absolute = adopt(CFURLCopyAbsoluteURL(url));
  return Value{Url{textOf(CFURLGetString(absolute ? absolute.get() : url))}};
}

std::optional<Value> convert(CFTypeRef object, Duration messagingTimeout, int depth);

Value listOf(CFArrayRef array, Duration messagingTimeout, int depth) {
  const CFIndex count = CFArrayGetCount(array);
  Values values;
  values.reserve(static_cast<std::size_t>(count));
  for (CFIndex i = 0; i < count; ++i) {
    std::optional<Value> value =
        convert(CFArrayGetValueAtIndex(array, i), messagingTimeout, depth + 1);
    values.push_back(value ? *std::move(value) : Value{OtherValue{}});
  }
  return Value{std::move(values)};
}

std::optional<Value> convert(CFTypeRef object, Duration messagingTimeout, int depth) {
  if (object == nullptr || CFGetTypeID(object) == CFNullGetTypeID()) {
    return std::nullopt;
  }
  if (auto text = textIn(object)) {
    return Value{*std::move(text)};
  }
  // A boolean is a type of its own, not a number, also where Cocoa made it as an NSNumber.
  if (const auto boolean = booleanIn(object)) {
    return Value{*boolean};
  }
  if (const auto number = numberIn(object)) {
    return Value{*number};
  }
  if (const AXUIElementRef element = asElement(object)) {
    return Value{makeElement(retain(element), messagingTimeout)};
  }
  if (const auto* value = castTo<AXValueRef>(object, AXValueGetTypeID())) {
    return structureOf(value);
  }
  if (const CFArrayRef array = asArray(object); array != nullptr && depth < kMaxListDepth) {
    return listOf(array, messagingTimeout, depth);
  }
  if (const CFURLRef url = asUrl(object)) {
    return urlOf(url);
  }
  return Value{OtherValue{}};
}

CfRef<CFTypeRef> structure(AXValueType type, const void* value) {
  return CfRef<CFTypeRef>::adopt(AXValueCreate(type, value));
}

CfRef<CFTypeRef> arrayOf(const Values& values) {
  std::vector<CfRef<CFTypeRef>> objects;
  std::vector<CFTypeRef> lent;
  for (const Value& value : values) {
    objects.push_back(objectOf(value));
    if (!objects.back()) {
      return {};
    }
    lent.push_back(objects.back().get());
  }
  return CfRef<CFTypeRef>::adopt(CFArrayCreate(
      nullptr, lent.data(), static_cast<CFIndex>(lent.size()), &kCFTypeArrayCallBacks));
}

struct ToObject {
  CfRef<CFTypeRef> operator()(const std::string& text) const {
    return CfRef<CFTypeRef>::retain(makeString(text).get());
  }
  CfRef<CFTypeRef> operator()(bool boolean) const {
    return CfRef<CFTypeRef>::retain(boolean ? kCFBooleanTrue : kCFBooleanFalse);
  }
  CfRef<CFTypeRef> operator()(double number) const {
    return CfRef<CFTypeRef>::adopt(CFNumberCreate(nullptr, kCFNumberDoubleType, &number));
  }
  CfRef<CFTypeRef> operator()(const Point& point) const {
    const CGPoint its{point.x, point.y};
    return structure(kAXValueTypeCGPoint, &its);
  }
  CfRef<CFTypeRef> operator()(const Size& size) const {
    const CGSize its{size.width, size.height};
    return structure(kAXValueTypeCGSize, &its);
  }
  CfRef<CFTypeRef> operator()(const Element& element) const {
    const MacElement* ours = macElement(element);
    return CfRef<CFTypeRef>::retain(ours == nullptr ? nullptr : ours->reference());
  }
  CfRef<CFTypeRef> operator()(const Values& values) const { return arrayOf(values); }
  CfRef<CFTypeRef> operator()(const Url& /*url*/) const { return {}; }
  CfRef<CFTypeRef> operator()(OtherValue /*value*/) const { return {}; }
};

}  // namespace

std::optional<Value> valueOf(CFTypeRef object, Duration messagingTimeout) {
  return convert(object, messagingTimeout, 0);
}

CfRef<CFTypeRef> objectOf(const Value& value) { return std::visit(ToObject{}, value.is); }

}  // namespace tarqo::mac
