#include "tests/platform/mac/standin/desktop_values.h"

#include <cstring>

#include "platform/mac/mac_cf_text.h"

namespace standin {
namespace {

struct ToObject {
  Owned operator()(const std::string& its) const { return text(its); }
  Owned operator()(bool its) const { return boolean(its); }
  Owned operator()(double its) const { return number(its); }
  Owned operator()(const tarqo::Point& its) const { return point(its.x, its.y); }
  Owned operator()(const tarqo::Size& its) const { return size(its.width, its.height); }
  Owned operator()(const tarqo::Url& its) const { return url(its.absolute); }
  Owned operator()(const tarqo::Element& its) const {
    const auto pid = onDesktop(
        [&](const tarqo::Platform& platform) { return platform.accessibility.pidOf(its); });
    return Owned::adopt(toRef<CFTypeRef>(
        Heap::instance().make<DesktopElement>(pid.value_or(0), std::optional(its), false)));
  }
  Owned operator()(const tarqo::Values& values) const {
    std::vector<Owned> objects;
    for (const tarqo::Value& value : values) {
      objects.push_back(objectOf(value));
    }
    return array(objects);
  }
  Owned operator()(tarqo::OtherValue /*its*/) const { return foreign(); }
};

template <typename Structure>
Structure structureIn(const AxValue& value) {
  Structure its{};
  std::memcpy(&its, value.bytes().data(), sizeof its);
  return its;
}

}  // namespace

Owned objectOf(const tarqo::Value& value) { return std::visit(ToObject{}, value.is); }

tarqo::Value valueOf(CFTypeRef object) {
  if (auto its = tarqo::mac::textIn(object)) {
    return {*std::move(its)};
  }
  if (const auto its = tarqo::mac::booleanIn(object)) {
    return {*its};
  }
  if (const auto its = tarqo::mac::numberIn(object)) {
    return {*its};
  }
  Object& any = Heap::instance().at(object, "a value");
  if (const auto* element = dynamic_cast<DesktopElement*>(&any); element && element->element()) {
    return {*element->element()};
  }
  if (const auto* value = dynamic_cast<AxValue*>(&any)) {
    if (value->kind() == kAXValueTypeCGPoint) {
      const auto its = structureIn<CGPoint>(*value);
      return {tarqo::Point{its.x, its.y}};
    }
    if (value->kind() == kAXValueTypeCGSize) {
      const auto its = structureIn<CGSize>(*value);
      return {tarqo::Size{its.width, its.height}};
    }
  }
  if (const CFArrayRef list = tarqo::mac::asArray(object)) {
    tarqo::Values values;
    for (CFIndex i = 0; i < CFArrayGetCount(list); ++i) {
      values.push_back(valueOf(CFArrayGetValueAtIndex(list, i)));
    }
    return {std::move(values)};
  }
  return {tarqo::OtherValue{}};
}

}  // namespace standin
