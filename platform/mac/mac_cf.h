// Owning references to Core Foundation objects, and casts that ask an object for its type.
//
// Functions with Create or Copy in their names give a reference that somebody must release: `adopt`
// it. Those with Get lend one: `retain` it to keep it. Any thread.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <utility>

namespace tarqo::mac {

/// Holds one reference to an object, or none. `Ref` is the pointer type, as `CFStringRef`.
template <typename Ref>
class CfRef {
 public:
  CfRef() = default;
  /// Takes over a reference that is the caller's to release; null gives none.
  [[nodiscard]] static CfRef adopt(Ref owned) { return CfRef(owned); }
  /// Adds a reference to a lent object; null gives none.
  [[nodiscard]] static CfRef retain(Ref lent) {
    if (lent != nullptr) {
      CFRetain(lent);
    }
    return CfRef(lent);
  }

  CfRef(const CfRef& other) : CfRef(retain(other.object_)) {}
  CfRef(CfRef&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  CfRef& operator=(CfRef other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  // CFRelease, CFRetain, CFEqual and CFGetTypeID crash on null.
  ~CfRef() { reset(); }

  /// Lent; null when there is none.
  [[nodiscard]] Ref get() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }

  void reset() {
    if (object_ != nullptr) {
      CFRelease(std::exchange(object_, nullptr));
    }
  }

  /// Empty, for a function that hands out a reference to release through its last argument. Such a
  /// function need not write there when it fails.
  [[nodiscard]] Ref* out() {
    reset();
    return &object_;
  }

 private:
  explicit CfRef(Ref object) : object_(object) {}

  Ref object_ = nullptr;
};

template <typename Ref>
[[nodiscard]] CfRef<Ref> adopt(Ref owned) {
  return CfRef<Ref>::adopt(owned);
}

template <typename Ref>
[[nodiscard]] CfRef<Ref> retain(Ref lent) {
  return CfRef<Ref>::retain(lent);
}

/// The object as the type that `typeId` names, as lent as it was; null when it is null or of
/// another type. Every value that another process supplied goes through this.
template <typename Ref>
[[nodiscard]] Ref castTo(CFTypeRef object, CFTypeID typeId) {
  return object != nullptr && CFGetTypeID(object) == typeId ? static_cast<Ref>(object) : nullptr;
}

[[nodiscard]] inline CFStringRef asString(CFTypeRef object) {
  return castTo<CFStringRef>(object, CFStringGetTypeID());
}
[[nodiscard]] inline CFNumberRef asNumber(CFTypeRef object) {
  return castTo<CFNumberRef>(object, CFNumberGetTypeID());
}
[[nodiscard]] inline CFBooleanRef asBoolean(CFTypeRef object) {
  return castTo<CFBooleanRef>(object, CFBooleanGetTypeID());
}
[[nodiscard]] inline CFArrayRef asArray(CFTypeRef object) {
  return castTo<CFArrayRef>(object, CFArrayGetTypeID());
}
[[nodiscard]] inline CFDictionaryRef asDictionary(CFTypeRef object) {
  return castTo<CFDictionaryRef>(object, CFDictionaryGetTypeID());
}
[[nodiscard]] inline CFURLRef asUrl(CFTypeRef object) {
  return castTo<CFURLRef>(object, CFURLGetTypeID());
}

}  // namespace tarqo::mac
