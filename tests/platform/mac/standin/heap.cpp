#include "tests/platform/mac/standin/heap.h"

#include <cstdio>
#include <cstdlib>
#include <mutex>

namespace standin {
namespace {

[[noreturn]] void crash(std::string_view user, const char* why) {
  std::fprintf(stderr, "%.*s %s\n", static_cast<int>(user.size()), user.data(), why);
  std::abort();
}

void endProgram(const std::string& what) { crash("stand-in:", what.c_str()); }

struct Types {
  std::mutex lock;
  std::map<std::string, CFTypeID, std::less<>> numbers;
};
Types& types() {
  static Types all;
  return all;
}

}  // namespace

void (*complain)(const std::string& what) = endProgram;
Languages languages;

// `offsetof` is not for classes with virtual functions, though every compiler here knows it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
const std::size_t Object::kClassOffset = offsetof(Object, class_);
#pragma GCC diagnostic pop

struct Heap::Store {
  mutable std::mutex lock;
  std::map<long, std::unique_ptr<Object>> objects;
  long made = 0;
  std::vector<std::unique_ptr<Object>> constants;
  bool freesWhatEnds = false;
};

CFTypeID typeNamed(std::string_view name) {
  Types& all = types();
  const std::lock_guard guard(all.lock);
  return all.numbers.try_emplace(std::string(name), all.numbers.size() + 1).first->second;
}

std::string nameOfType(CFTypeID type) {
  Types& all = types();
  const std::lock_guard guard(all.lock);
  for (const auto& [name, number] : all.numbers) {
    if (number == type) {
      return name;
    }
  }
  return "?";
}

Heap::Heap() : store_(std::make_unique<Store>()) {}

Heap& Heap::instance() {
  // Never destroyed: other threads may still let go of objects while the program ends.
  static Heap* const heap = new Heap();
  return *heap;
}

void Heap::add(std::unique_ptr<Object> object, bool constant) {
  if (object->class_ == nullptr && languages.classOf != nullptr) {
    object->class_ = languages.classOf(object->type());
  }
  object->constant_ = constant;
  const std::lock_guard guard(store_->lock);
  if (constant) {
    store_->constants.push_back(std::move(object));
    return;
  }
  const long number = ++store_->made;
  object->number_ = number;
  store_->objects.emplace(number, std::move(object));
}

void Heap::retain(Object& object) { ++object.references_; }

bool Heap::retainIfAlive(Object& object) {
  long references = object.references_;
  while (references >= 1) {
    if (object.references_.compare_exchange_weak(references, references + 1)) {
      return true;
    }
  }
  return false;
}

void Heap::release(Object& object) {
  if (object.constant_) {
    // Allowed where a retain went before.
    if (object.references_-- == 1) {
      ++object.references_;
      complain("a constant was released: " + object.description());
    }
    return;
  }
  if (--object.references_ == 0) {
    object.end();
    std::unique_ptr<Object> ended;  // Freed outside the lock.
    const std::lock_guard guard(store_->lock);
    const auto found = store_->objects.find(object.number_);
    if (store_->freesWhatEnds && found != store_->objects.end()) {
      ended = std::move(found->second);
      store_->objects.erase(found);
    }
  }
}

Object& Heap::at(CFTypeRef reference, std::string_view user) {
  if (reference == nullptr) {
    crash(user, "was given null, which crashes.");
  }
  CFTypeRef literal = languages.literal != nullptr ? languages.literal(reference) : nullptr;
  Object& object = Object::of(literal != nullptr ? literal : reference);
  if (object.references_ < 1) {
    complain(std::string(user) + " was given what had ended: " + object.description());
  }
  return object;
}

void Heap::freeWhatEnds() {
  const std::lock_guard guard(store_->lock);
  store_->freesWhatEnds = true;
}

std::vector<std::string> Heap::living() const {
  const std::lock_guard guard(store_->lock);
  std::vector<std::string> living;
  for (const auto& [number, object] : store_->objects) {
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

std::map<std::string, long> Heap::population() const {
  std::map<std::string, long> result;
  const std::lock_guard guard(store_->lock);
  for (const auto& [number, object] : store_->objects) {
    if (object->references_ > 0) {
      ++result[nameOfType(object->type())];
    }
  }
  return result;
}

void Heap::forgetAll() {
  const std::lock_guard guard(store_->lock);
  store_->objects.clear();
  for (const auto& constant : store_->constants) {
    constant->references_ = 1;
  }
}

}  // namespace standin
