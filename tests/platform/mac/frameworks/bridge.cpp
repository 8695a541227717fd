// Where the stand-in's objects and the runtime's classes meet: which class an object belongs to,
// what stands for a literal, and the switches that make a message fail.

#include <array>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

#include "tests/platform/mac/runtime/classes.h"
#include "tests/platform/mac/standin/core_foundation.h"
#include "tests/platform/mac/standin/faults.h"

extern "C" void objc_release(id object);

namespace standin {
namespace {

/// A literal, as the compiler lays it out.
struct Literal {
  const void* type;
  std::uint32_t flags;
  const void* units;
  long length;
};
constexpr std::uint32_t kIsWide = 0x10;

constexpr std::array<std::pair<std::string_view, const char*>, 3> kClasses{
    {{"CFString", "NSString"}, {"CFArray", "NSArray"}, {"CFDictionary", "NSDictionary"}}};

const void* classOf(CFTypeID type) {
  const std::string name = nameOfType(type);
  for (const auto& [object, its] : kClasses) {
    if (name == object) {
      return classNamed(its);
    }
  }
  return classNamed("StandinObject");
}

struct Literals {
  std::mutex lock;
  std::map<const Literal*, CFTypeRef> objects;
};

CFTypeRef makeLiteral(const Literal& literal) {
  const auto length = static_cast<std::size_t>(literal.length);
  std::u16string units;
  if ((literal.flags & kIsWide) != 0) {
    units.assign(static_cast<const char16_t*>(literal.units), length);
  } else {
    const std::string_view text(static_cast<const char*>(literal.units), length);
    units.assign(text.begin(), text.end());
  }
  return Heap::instance().makeConstant<String>(std::move(units))->reference();
}

CFTypeRef literalAt(CFTypeRef reference) {
  static Class const literals = classNamed("StandinConstantString");
  const auto* literal = static_cast<const Literal*>(reference);
  if (literal->type != literals) {
    return nullptr;
  }
  static Literals* const all = new Literals();
  const std::lock_guard guard(all->lock);
  auto [found, fresh] = all->objects.try_emplace(literal);
  if (fresh) {
    found->second = makeLiteral(*literal);
  }
  return found->second;
}

/// What a message gives that is to give nothing: none of those that can be switched gives a
/// structure.
id nothing() { return nullptr; }

/// An initialiser that gives nothing has let go of what it was to initialise.
id noInstance(id receiver, SEL /*name*/) {
  objc_release(receiver);
  return nullptr;
}

/// Of the frameworks' own classes the messages that the backend sends, but for those that the
/// compiler sends for it.
IMP faultOf(Class receiver, SEL selector) {
  if (!Faults::instance().asks()) {
    return nullptr;
  }
  static constexpr std::array<std::string_view, 14> kOfTheRuntime{
      "arrayWithObjects:count:",
      "dictionaryWithObjects:forKeys:count:",
      "alloc",
      "new",
      "init",
      "retain",
      "release",
      "autorelease",
      "copy",
      "self",
      "class",
      "dealloc",
      ".cxx_destruct",
      ".cxx_construct"};
  const std::string_view name = nameOf(selector);
  for (const std::string_view each : kOfTheRuntime) {
    if (name == each || name.starts_with("set")) {
      return nullptr;
    }
  }
  const Fault fault =
      Faults::instance().next("[" + nameOf(receiver) + " " + std::string(name) + "]");
  if (!fault.fails()) {
    return nullptr;
  }
  return name.starts_with("init") ? reinterpret_cast<IMP>(noInstance)
                                  : reinterpret_cast<IMP>(nothing);
}

__attribute__((constructor(102))) void meet() {
  languages.classOf = classOf;
  languages.literal = literalAt;
  intercept = faultOf;
}

}  // namespace
}  // namespace standin
