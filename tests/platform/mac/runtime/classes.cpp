#include "tests/platform/mac/runtime/classes.h"

#include <cstdio>
#include <cstdlib>
#include <set>
#include <unordered_map>

// The sections that the compiler fills; the linker names their ends. Without a section there is
// nothing to name.
extern "C" {
#define TARQO_SECTION(name, type)                     \
  extern type __start_##name[] __attribute__((weak)); \
  extern type __stop_##name[] __attribute__((weak));
TARQO_SECTION(objc_selrefs, SEL)
TARQO_SECTION(objc_classlist, Class)
TARQO_SECTION(objc_catlist, void*)
#undef TARQO_SECTION

void* _objc_empty_cache = nullptr;
}

namespace standin {
namespace {

using Methods = std::unordered_map<SEL, IMP>;

struct Registry {
  std::set<std::string, std::less<>> selectors;
  std::unordered_map<std::string, Class> classes;
  std::unordered_map<Class, Methods> methods;
};

/// Made by the first who asks, before any constructor of the program has run.
Registry& registry() {
  static Registry* const all = new Registry();
  return *all;
}

SEL unique(std::string_view name) {
  const std::string& kept = *registry().selectors.emplace(name).first;
  return reinterpret_cast<SEL>(const_cast<char*>(kept.c_str()));
}

[[noreturn]] void fail(const std::string& why) {
  std::fprintf(stderr, "Objective-C: %s\n", why.c_str());
  std::abort();
}

void addMethods(Class type) {
  Methods& methods = registry().methods[type];
  const objc_method_list* list = type->facts->methods;
  for (std::uint32_t i = 0; list != nullptr && i < list->count; ++i) {
    methods[unique(nameOf(list->methods[i].name))] = list->methods[i].implementation;
  }
}

void addClass(Class type) {
  const objc_class_facts& facts = *type->facts;
  if (type->superclass != nullptr && facts.instanceStart < type->superclass->facts->instanceSize) {
    fail(std::string(facts.name) + " was compiled without the variables of its superclass");
  }
  registry().classes[facts.name] = type;
  addMethods(type);
  addMethods(type->isa);
}

/// Before the constructors of the program, some of which make objects.
__attribute__((constructor(101))) void loadClasses() {
  for (SEL* each = __start_objc_selrefs; each != __stop_objc_selrefs; ++each) {
    *each = unique(nameOf(*each));
  }
  for (Class* each = __start_objc_classlist; each != __stop_objc_classlist; ++each) {
    addClass(*each);
  }
  if (+__start_objc_catlist != +__stop_objc_catlist) {
    fail("categories are not read");
  }
}

IMP found(Class type, SEL selector) {
  if (intercept != nullptr) {
    if (const IMP instead = intercept(type, selector)) {
      return instead;
    }
  }
  const IMP method = methodOf(type, selector);
  if (method == nullptr) {
    fail(nameOf(type) + " does not understand " + std::string(nameOf(selector)));
  }
  return method;
}

}  // namespace

IMP (*intercept)(Class receiver, SEL selector) = nullptr;

Class classNamed(std::string_view name) {
  const auto found = registry().classes.find(std::string(name));
  return found == registry().classes.end() ? nullptr : found->second;
}

SEL selectorNamed(std::string_view name) {
  const auto found = registry().selectors.find(name);
  return found == registry().selectors.end()
             ? nullptr
             : reinterpret_cast<SEL>(const_cast<char*>(found->c_str()));
}

IMP ownMethodOf(Class type, SEL selector) {
  const auto methods = registry().methods.find(type);
  if (methods == registry().methods.end()) {
    return nullptr;
  }
  const auto method = methods->second.find(selector);
  return method == methods->second.end() ? nullptr : method->second;
}

IMP methodOf(Class type, SEL selector) {
  IMP method = nullptr;
  for (; type != nullptr && method == nullptr; type = type->superclass) {
    method = ownMethodOf(type, selector);
  }
  return method;
}

bool isSubclass(Class type, Class of) {
  while (type != nullptr && type != of) {
    type = type->superclass;
  }
  return type != nullptr;
}

std::string nameOf(Class type) { return type->facts->name; }

}  // namespace standin

IMP standinLookUp(id receiver, SEL selector) { return standin::found(receiver->isa, selector); }

IMP standinLookUpSuper(Class current, SEL selector) {
  return standin::found(current->superclass, selector);
}
