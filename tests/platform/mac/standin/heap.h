// Reference counting as Core Foundation and Objective-C do it, for tests.
//
// In a test nothing is ever freed while it runs, so that a release too many and a use after the end
// are reported and do no harm. A program that runs for long frees what ends, as a Mac does.
//
// A reference is the address of the object's class pointer, the first word of every object on a
// Mac; what the stand-in knows of the object lies before it. So one object is a Core Foundation
// object and an Objective-C object at once.
//
// Any thread. What crashes on a Mac, like a null where none is allowed, ends the test program here.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <atomic>
#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace standin {

/// A type id for each class that calls this with a name of its own; the same each time.
[[nodiscard]] CFTypeID typeNamed(std::string_view name);
[[nodiscard]] std::string nameOfType(CFTypeID type);

/// Reports a misuse: the tests make it a failure, by default it ends the program.
extern void (*complain)(const std::string& what);

/// What there is only when the Objective-C runtime is linked too.
struct Languages {
  /// The class that a new object of a type belongs to.
  const void* (*classOf)(CFTypeID type) = nullptr;
  /// The object that stands for the static data of a literal; null when the reference is none.
  CFTypeRef (*literal)(CFTypeRef reference) = nullptr;
};
extern Languages languages;

class Object {
 public:
  Object() = default;
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  virtual ~Object() = default;

  [[nodiscard]] virtual CFTypeID type() const = 0;
  [[nodiscard]] virtual std::string description() const = 0;
  [[nodiscard]] virtual bool equals(const Object& other) const { return this == &other; }
  /// What the object holds is released here, when the last reference goes.
  virtual void end() {}

  [[nodiscard]] CFTypeRef reference() const { return &class_; }
  [[nodiscard]] static Object& of(CFTypeRef reference) {
    auto* address = static_cast<std::byte*>(const_cast<void*>(reference));
    return *reinterpret_cast<Object*>(address - kClassOffset);
  }
  void setClass(const void* its) { class_ = its; }
  [[nodiscard]] long references() const { return references_; }

 private:
  friend class Heap;
  static const std::size_t kClassOffset;

  std::atomic<long> references_ = 1;  // Below 1 after the end; constants stay.
  bool constant_ = false;
  long number_ = 0;              // In the order of their making.
  const void* class_ = nullptr;  // Last: the variables of a class follow it.
};

/// A class that only lends its type id, for values that the backend has no use for.
class Foreign final : public Object {
 public:
  [[nodiscard]] CFTypeID type() const override { return typeNamed("Foreign"); }
  [[nodiscard]] std::string description() const override { return "a foreign object"; }
};

class Heap {
 public:
  /// The heap of the running test.
  static Heap& instance();

  /// The new object carries the caller's reference.
  template <typename T, typename... Arguments>
  T* make(Arguments&&... arguments) {
    auto object = std::make_unique<T>(std::forward<Arguments>(arguments)...);
    T* made = object.get();
    add(std::move(object), false);
    return made;
  }

  /// An object that is never released, as a literal or a constant of the system.
  template <typename T, typename... Arguments>
  T* makeConstant(Arguments&&... arguments) {
    auto object = std::make_unique<T>(std::forward<Arguments>(arguments)...);
    T* made = object.get();
    add(std::move(object), true);
    return made;
  }

  void add(std::unique_ptr<Object> object, bool constant);
  void retain(Object& object);
  void release(Object& object);
  /// Adds a reference unless the last one has gone.
  [[nodiscard]] bool retainIfAlive(Object& object);

  /// The object behind a reference; a use after its end is a failure of the test.
  [[nodiscard]] Object& at(CFTypeRef reference, std::string_view user);

  /// From now on what ends is freed.
  void freeWhatEnds();

  [[nodiscard]] std::vector<std::string> living() const;  ///< Without the constants.
  /// How many objects of each type live.
  [[nodiscard]] std::map<std::string, long> population() const;
  /// Ends the test: what is still alive is forgotten, so that the next one is not blamed for it.
  void forgetAll();

 private:
  struct Store;
  Heap();
  std::unique_ptr<Store> store_;
};

/// The object behind a reference, which must be of that class.
template <typename T>
[[nodiscard]] T& as(CFTypeRef reference, std::string_view user) {
  return dynamic_cast<T&>(Heap::instance().at(reference, user));
}

/// An object as the reference type of the interface.
template <typename Ref>
[[nodiscard]] Ref toRef(Object* object) {
  return static_cast<Ref>(const_cast<void*>(object->reference()));
}

}  // namespace standin
