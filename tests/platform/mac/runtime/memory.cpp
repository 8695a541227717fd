// What the compiler calls for automatic reference counting, as it is documented: counts,
// weak references, autorelease pools, properties.

#include "tests/platform/mac/runtime/memory.h"

#include <cstring>
#include <map>
#include <mutex>
#include <new>
#include <set>
#include <utility>
#include <vector>

#include "tests/platform/mac/runtime/blocks.h"
#include "tests/platform/mac/runtime/classes.h"
#include "tests/platform/mac/standin/heap.h"

namespace standin {
namespace {

using VoidMethod = void (*)(id, SEL);

void send(id receiver, const char* name) {
  const SEL selector = selectorNamed(name);
  if (const IMP method = methodOf(receiver->isa, selector)) {
    reinterpret_cast<VoidMethod>(method)(receiver, selector);
  }
}

/// Calls what the compiler made for the variables that one class adds.
void callOwn(id receiver, Class type, const char* name) {
  const SEL selector = selectorNamed(name);
  const IMP method = selector == nullptr ? nullptr : ownMethodOf(type, selector);
  if (method != nullptr) {
    reinterpret_cast<VoidMethod>(method)(receiver, selector);
  }
}

/// Weak references, by the object that each refers to.
struct WeakTable {
  std::mutex lock;
  std::map<id, std::set<id*>> places;
};
WeakTable& weakTable() {
  static WeakTable* const table = new WeakTable();
  return *table;
}

void forgetWeak(id object) {
  WeakTable& table = weakTable();
  const std::lock_guard guard(table.lock);
  const auto found = table.places.find(object);
  if (found == table.places.end()) {
    return;
  }
  for (id* place : found->second) {
    *place = nullptr;
  }
  table.places.erase(found);
}

/// An object of an Objective-C class; its variables follow it in memory.
class Instance final : public Object {
 public:
  [[nodiscard]] std::string description() const override { return "a " + nameOfType(type()); }
  void end() override {
    const id its = static_cast<id>(const_cast<void*>(reference()));
    forgetWeak(its);
    send(its, "dealloc");
    for (Class type = its->isa; type != nullptr; type = type->superclass) {
      callOwn(its, type, ".cxx_destruct");
    }
  }
  [[nodiscard]] CFTypeID type() const override {
    return typeNamed(nameOf(static_cast<id>(const_cast<void*>(reference()))->isa));
  }
  // The variables are part of the memory, whatever the size of this class.
  static void operator delete(void* memory) { ::operator delete(memory); }
};

void construct(id object, Class type) {
  if (type->superclass != nullptr) {
    construct(object, type->superclass);
  }
  callOwn(object, type, ".cxx_construct");
}

id newInstance(Class type) {
  // The class pointer is the last member of `Object` and the first variable of every class.
  static_assert(sizeof(Instance) == sizeof(Object));
  const std::size_t bytes = sizeof(Instance) + type->facts->instanceSize;
  void* memory = ::operator new(bytes);
  std::memset(memory, 0, bytes);
  std::unique_ptr<Object> object(new (memory) Instance);
  object->setClass(type);
  const id made = static_cast<id>(const_cast<void*>(object->reference()));
  Heap::instance().add(std::move(object), false);
  construct(made, type);
  return made;
}

bool isClass(id object) {
  constexpr std::uint32_t kMetaclass = 1;
  return (object->isa->facts->flags & kMetaclass) != 0;
}

id retained(id object) {
  if (object == nullptr || isClass(object)) {
    return object;
  }
  if (isBlock(object)) {
    return static_cast<id>(_Block_copy(object));
  }
  return static_cast<id>(const_cast<void*>(CFRetain(object)));
}

void released(id object) {
  if (object == nullptr || isClass(object)) {
    return;
  }
  if (isBlock(object)) {
    _Block_release(object);
  } else {
    CFRelease(object);
  }
}

/// A thread's pools, one above the other; what is left when the thread ends is released then.
struct Pools {
  ~Pools() { drainTo(0); }
  void drainTo(std::size_t level) {
    while (waiting.size() > level) {
      const id last = waiting.back();
      waiting.pop_back();
      released(last);
    }
  }
  std::vector<id> waiting;
};
thread_local Pools pools;

}  // namespace

std::size_t waitingInPools() { return pools.waiting.size(); }

}  // namespace standin

using standin::released;
using standin::retained;
using standin::weakTable;

namespace {

/// Properties that are set and read by several threads; the objects are few.
std::recursive_mutex& propertyLock() {
  static auto* const lock = new std::recursive_mutex();
  return *lock;
}

id copied(id object) {
  if (object == nullptr) {
    return nullptr;
  }
  if (standin::isBlock(object)) {
    return static_cast<id>(_Block_copy(object));
  }
  const SEL selector = standin::selectorNamed("copy");
  return reinterpret_cast<id (*)(id, SEL)>(standinLookUp(object, selector))(object, selector);
}

void replace(id* place, id fresh) {
  id old = nullptr;
  {
    const std::lock_guard guard(propertyLock());
    old = std::exchange(*place, fresh);
  }
  released(old);
}

id* placeIn(id object, std::ptrdiff_t offset) {
  return reinterpret_cast<id*>(reinterpret_cast<std::byte*>(object) + offset);
}

void bind(id* place, id object) {
  if (object != nullptr) {
    weakTable().places[object].insert(place);
  }
  *place = object;
}

void unbind(id* place) {
  const auto found = weakTable().places.find(*place);
  if (*place != nullptr && found != weakTable().places.end()) {
    found->second.erase(place);
  }
}

}  // namespace

extern "C" {

id objc_alloc(Class type) {
  const SEL selector = standin::selectorNamed("alloc");
  const id receiver = reinterpret_cast<id>(type);
  if (const IMP method = selector == nullptr ? nullptr : standinLookUp(receiver, selector)) {
    return reinterpret_cast<id (*)(id, SEL)>(method)(receiver, selector);
  }
  return standin::newInstance(type);
}
id objc_alloc_init(Class type) {
  const id made = objc_alloc(type);
  const SEL selector = standin::selectorNamed("init");
  return made == nullptr || selector == nullptr
             ? made
             : reinterpret_cast<id (*)(id, SEL)>(standinLookUp(made, selector))(made, selector);
}
id objc_opt_new(Class type) { return objc_alloc_init(type); }
id standinAllocate(Class type) { return standin::newInstance(type); }

id objc_retain(id object) { return retained(object); }
void objc_release(id object) { released(object); }
id objc_retainBlock(id block) { return static_cast<id>(_Block_copy(block)); }
id objc_autorelease(id object) {
  if (object != nullptr) {
    standin::pools.waiting.push_back(object);
  }
  return object;
}
id objc_autoreleaseReturnValue(id object) { return objc_autorelease(object); }
id objc_retainAutorelease(id object) { return objc_autorelease(retained(object)); }
id objc_retainAutoreleaseReturnValue(id object) { return objc_autorelease(retained(object)); }
id objc_retainAutoreleasedReturnValue(id object) { return retained(object); }
id objc_unsafeClaimAutoreleasedReturnValue(id object) { return object; }
void objc_storeStrong(id* place, id object) {
  const id fresh = retained(object);
  released(std::exchange(*place, fresh));
}

void* objc_autoreleasePoolPush() {
  return reinterpret_cast<void*>(standin::pools.waiting.size() + 1);
}
void objc_autoreleasePoolPop(void* pool) {
  standin::pools.drainTo(reinterpret_cast<std::size_t>(pool) - 1);
}

id objc_initWeak(id* place, id object) {
  const std::lock_guard guard(weakTable().lock);
  bind(place, object);
  return object;
}
id objc_storeWeak(id* place, id object) {
  const std::lock_guard guard(weakTable().lock);
  unbind(place);
  bind(place, object);
  return object;
}
id objc_loadWeakRetained(id* place) {
  const std::lock_guard guard(weakTable().lock);
  const id object = *place;
  const bool alive =
      object != nullptr && standin::Heap::instance().retainIfAlive(standin::Object::of(object));
  return alive ? object : nullptr;
}
id objc_loadWeak(id* place) { return objc_autorelease(objc_loadWeakRetained(place)); }
void objc_destroyWeak(id* place) {
  const std::lock_guard guard(weakTable().lock);
  unbind(place);
  *place = nullptr;
}
void objc_copyWeak(id* to, id* from) {
  const std::lock_guard guard(weakTable().lock);
  bind(to, *from);
}
void objc_moveWeak(id* to, id* from) {
  const std::lock_guard guard(weakTable().lock);
  const id object = *from;
  unbind(from);
  *from = nullptr;
  bind(to, object);
}

// Properties. All are treated as atomic.
id objc_getProperty(id object, SEL /*name*/, std::ptrdiff_t offset, BOOL /*isAtomic*/) {
  const std::lock_guard guard(propertyLock());
  return objc_autorelease(retained(*placeIn(object, offset)));
}
void objc_setProperty_atomic(id object, SEL /*name*/, id value, std::ptrdiff_t offset) {
  replace(placeIn(object, offset), retained(value));
}
void objc_setProperty_nonatomic(id object, SEL /*name*/, id value, std::ptrdiff_t offset) {
  replace(placeIn(object, offset), retained(value));
}
void objc_setProperty_atomic_copy(id object, SEL /*name*/, id value, std::ptrdiff_t offset) {
  replace(placeIn(object, offset), copied(value));
}
void objc_setProperty_nonatomic_copy(id object, SEL /*name*/, id value, std::ptrdiff_t offset) {
  replace(placeIn(object, offset), copied(value));
}
void objc_copyStruct(void* to, const void* from, std::ptrdiff_t size, BOOL /*isAtomic*/,
                     BOOL /*hasStrong*/) {
  const std::lock_guard guard(propertyLock());
  std::memcpy(to, from, static_cast<std::size_t>(size));
}

void objc_enumerationMutation(id /*collection*/) {
  standin::complain("a collection was changed while it was gone through");
}

// "@synchronized": one lock for all objects, which is enough for what may wait at most.
int objc_sync_enter(id /*object*/) {
  propertyLock().lock();
  return 0;
}
int objc_sync_exit(id /*object*/) {
  propertyLock().unlock();
  return 0;
}

}  // extern "C"
