#include "tests/platform/mac/standin/heap.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>

namespace standin {

struct Heap::Store {
  mutable std::mutex lock;
  std::vector<std::unique_ptr<Object>> objects;
  std::vector<std::unique_ptr<Object>> constants;
};

CFTypeID typeNamed(std::string_view name) {
  static std::mutex lock;
  static std::map<std::string, CFTypeID, std::less<>> types;
  const std::lock_guard guard(lock);
  return types.try_emplace(std::string(name), types.size() + 1).first->second;
}

Heap::Heap() : store_(std::make_unique<Store>()) {}

Heap& Heap::instance() {
  static Heap heap;
  return heap;
}

void Heap::add(std::unique_ptr<Object> object, bool constant) {
  const std::lock_guard guard(store_->lock);
  object->constant_ = constant;
  (constant ? store_->constants : store_->objects).push_back(std::move(object));
}

void Heap::retain(Object& object) { ++object.references_; }

void Heap::release(Object& object) {
  if (object.constant_) {
    // Allowed where a retain went before.
    if (object.references_-- == 1) {
      ++object.references_;
      ADD_FAILURE() << "a constant was released: " << object.description();
    }
    return;
  }
  if (--object.references_ == 0) {
    object.end();
  }
}

Object& Heap::at(CFTypeRef reference, std::string_view user) {
  if (reference == nullptr) {
    std::fprintf(stderr, "%.*s was given null, which crashes.\n", static_cast<int>(user.size()),
                 user.data());
    std::abort();
  }
  auto& object = *static_cast<Object*>(const_cast<void*>(reference));
  EXPECT_GE(object.references_, 1) << user << " was given what had ended: " << object.description();
  return object;
}

std::vector<std::string> Heap::living() const {
  const std::lock_guard guard(store_->lock);
  std::vector<std::string> living;
  for (const auto& object : store_->objects) {
    if (object->references_ > 0) {
      living.push_back(object->description() + " x" + std::to_string(object->references_));
    }
  }
  for (const auto& constant : store_->constants) {
    if (constant->references_ != 1) {
      living.push_back("constant " + constant->description());
    }
  }
  return living;
}

void Heap::forgetAll() {
  const std::lock_guard guard(store_->lock);
  store_->objects.clear();
  for (const auto& constant : store_->constants) {
    constant->references_ = 1;
  }
}

}  // namespace standin
