// Reference counting as Core Foundation does it, for tests: nothing is ever freed while a test
// runs, so that a release too many and a use after the end are reported and do no harm.
//
// Any thread. What crashes on a Mac, like a null where none is allowed, ends the test program here.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <atomic>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace standin {

/// A type id for each class that calls this with a name of its own; the same each time.
[[nodiscard]] CFTypeID typeNamed(std::string_view name);

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

 private:
  friend class Heap;
  std::atomic<long> references_ = 1;  // Below 1 after the end; constants stay.
  bool constant_ = false;
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

  void retain(Object& object);
  void release(Object& object);

  /// The object behind a reference; a use after its end is a failure of the test.
  [[nodiscard]] Object& at(CFTypeRef reference, std::string_view user);

  [[nodiscard]] std::vector<std::string> living() const;  ///< Without the constants.
  /// Ends the test: what is still alive is forgotten, so that the next one is not blamed for it.
  void forgetAll();

 private:
  void add(std::unique_ptr<Object> object, bool constant);

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
  return reinterpret_cast<Ref>(object);
}

}  // namespace standin
