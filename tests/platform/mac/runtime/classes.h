// The Objective-C runtime of the stand-in: the classes of the program, their methods and selectors.
//
// The compiler describes each class in sections of the file, in the form that Apple's runtime
// reads; `loadClasses` reads them before any other code of the program runs. Nothing is added
// later, so lookups need no lock.
#pragma once

#include <objc/objc.h>

#include <cstdint>
#include <string>
#include <string_view>

extern "C" {

/// The descriptions, as the compiler lays them out.
struct objc_method {
  SEL name;
  const char* types;
  IMP implementation;
};
struct objc_method_list {
  std::uint32_t entrySize;
  std::uint32_t count;
  objc_method methods[1];
};
struct objc_class_facts {
  std::uint32_t flags;
  std::uint32_t instanceStart;
  std::uint32_t instanceSize;
  std::uint32_t reserved;
  const std::uint8_t* ivarLayout;
  const char* name;
  objc_method_list* methods;
  const void* protocols;
  const void* ivars;
  const std::uint8_t* weakIvarLayout;
  const void* properties;
};
struct objc_class {
  Class isa;
  Class superclass;
  void* cache;
  void* vtable;
  objc_class_facts* facts;
};
struct objc_object {
  Class isa;
};

/// What a call to a method runs. Ends the program when the class has no such method, since the
/// exception of a Mac would be caught by those that the tests are to examine.
IMP standinLookUp(id receiver, SEL selector);
IMP standinLookUpSuper(Class current, SEL selector);

}  // extern "C"

namespace standin {

/// Null when the program has no such class.
[[nodiscard]] Class classNamed(std::string_view name);
[[nodiscard]] SEL selectorNamed(std::string_view name);
/// Null when neither the class nor those above it have the method.
[[nodiscard]] IMP methodOf(Class type, SEL selector);
/// Null when the class itself does not define it.
[[nodiscard]] IMP ownMethodOf(Class type, SEL selector);
[[nodiscard]] bool isSubclass(Class type, Class of);
[[nodiscard]] std::string nameOf(Class type);
[[nodiscard]] inline std::string_view nameOf(SEL selector) {
  return reinterpret_cast<const char*>(selector);
}

/// Called with each message before it is sent; what it gives is run instead, unless null. The
/// switch for faults.
extern IMP (*intercept)(Class receiver, SEL selector);

}  // namespace standin
