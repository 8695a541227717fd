#include "tests/platform/mac/standin/core_foundation.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <mutex>
#include <sstream>

#include "tests/platform/mac/standin/utf.h"

struct CFArrayCallBacks {
  int unused;
};
struct CFDictionaryKeyCallBacks {
  int unused;
};
struct CFDictionaryValueCallBacks {
  int unused;
};

namespace standin {
namespace {

class Truth final : public Object {
 public:
  explicit Truth(bool value) : value_(value) {}
  [[nodiscard]] CFTypeID type() const override { return typeNamed("CFBoolean"); }
  [[nodiscard]] std::string description() const override {
    return value_ ? "boolean true" : "boolean false";
  }
  [[nodiscard]] bool value() const { return value_; }

 private:
  bool value_;
};

class Null final : public Object {
 public:
  [[nodiscard]] CFTypeID type() const override { return typeNamed("CFNull"); }
  [[nodiscard]] std::string description() const override { return "null"; }
};

class Number final : public Object {
 public:
  Number(bool isFloat, double value, SInt64 whole)
      : isFloat_(isFloat), value_(value), whole_(whole) {}
  [[nodiscard]] CFTypeID type() const override { return typeNamed("CFNumber"); }
  [[nodiscard]] std::string description() const override {
    std::ostringstream out;
    out << "number " << (isFloat_ ? value_ : static_cast<double>(whole_));
    return out.str();
  }
  /// As Core Foundation does: what fits is written, and false says that something was lost.
  [[nodiscard]] bool read(double& out) const {
    out = isFloat_ ? value_ : static_cast<double>(whole_);
    constexpr SInt64 kExact = SInt64{1} << 53;
    return isFloat_ || (whole_ >= -kExact && whole_ <= kExact);
  }
  [[nodiscard]] bool read(SInt64& out) const {
    if (!isFloat_) {
      out = whole_;
      return true;
    }
    constexpr double kLimit = 9223372036854775808.0;
    const bool fits = value_ >= -kLimit && value_ < kLimit;
    out = fits ? static_cast<SInt64>(value_) : 0;
    return fits && std::trunc(value_) == value_;
  }

 private:
  bool isFloat_;
  double value_;
  SInt64 whole_;
};

class Array final : public Object {
 public:
  Array(std::vector<CFTypeRef> items, bool retains) : items_(std::move(items)), retains_(retains) {
    for (CFTypeRef item : items_) {
      if (retains_) {
        CFRetain(item);
      }
    }
  }
  [[nodiscard]] CFTypeID type() const override { return typeNamed("CFArray"); }
  [[nodiscard]] std::string description() const override {
    std::string result = "list";
    for (CFTypeRef item : items_) {
      result += " [" + describe(item) + "]";
    }
    return result;
  }
  void end() override {
    for (CFTypeRef item : items_) {
      if (retains_) {
        CFRelease(item);
      }
    }
  }
  [[nodiscard]] const std::vector<CFTypeRef>& items() const { return items_; }

 private:
  std::vector<CFTypeRef> items_;
  bool retains_;
};

class Dictionary final : public Object {
 public:
  explicit Dictionary(std::vector<std::pair<CFTypeRef, CFTypeRef>> entries)
      : entries_(std::move(entries)) {
    for (const auto& [key, value] : entries_) {
      CFRetain(key);
      CFRetain(value);
    }
  }
  [[nodiscard]] CFTypeID type() const override { return typeNamed("CFDictionary"); }
  [[nodiscard]] std::string description() const override { return "a dictionary"; }
  void end() override {
    for (const auto& [key, value] : entries_) {
      CFRelease(key);
      CFRelease(value);
    }
  }
  [[nodiscard]] CFTypeRef find(CFTypeRef key) const {
    const auto found = std::find_if(entries_.begin(), entries_.end(), [&](const auto& entry) {
      return CFEqual(entry.first, key) != 0;
    });
    return found == entries_.end() ? nullptr : found->second;
  }

 private:
  std::vector<std::pair<CFTypeRef, CFTypeRef>> entries_;
};

class Url final : public Object {
 public:
  Url(CFStringRef text, std::string base) : text_(text), base_(std::move(base)) {}
  [[nodiscard]] CFTypeID type() const override { return typeNamed("CFURL"); }
  [[nodiscard]] std::string description() const override { return "url " + nameOf(text_); }
  void end() override { CFRelease(text_); }
  [[nodiscard]] CFStringRef text() const { return text_; }
  [[nodiscard]] const std::string& base() const { return base_; }

 private:
  CFStringRef text_;
  std::string base_;
};

template <typename T>
Owned owned(T* object) {
  return Owned::adopt(object->reference());
}

}  // namespace

bool String::equals(const Object& other) const {
  const auto* text = dynamic_cast<const String*>(&other);
  return text != nullptr && text->units_ == units_;
}

std::string String::utf8() const {
  std::string result;
  for (std::size_t at = 0; at < units_.size();) {
    const auto [codePoint, length] = codePointAt(units_, at);
    appendUtf8(length == 0 ? U'?' : codePoint, result);
    at += std::max<std::size_t>(length, 1);
  }
  return result;
}

std::string AxValue::description() const {
  std::ostringstream out;
  double numbers[4] = {};
  std::memcpy(numbers, bytes_.data(), std::min(bytes_.size(), sizeof numbers));
  if (kind_ == kAXValueTypeCGPoint) {
    out << "point " << numbers[0] << "," << numbers[1];
  } else if (kind_ == kAXValueTypeCGSize) {
    out << "size " << numbers[0] << "x" << numbers[1];
  } else {
    out << "structure " << static_cast<int>(kind_);
  }
  return out.str();
}

std::string nameOf(CFStringRef text) { return as<String>(text, "nameOf").utf8(); }
std::string describe(CFTypeRef object) {
  return Heap::instance().at(object, "describe").description();
}

Owned text16(std::u16string units) {
  return owned(Heap::instance().make<String>(std::move(units)));
}
Owned text(std::string_view utf8) { return text16(decoded(utf8).value()); }
Owned number(double value) { return owned(Heap::instance().make<Number>(true, value, 0)); }
Owned integer(SInt64 value) { return owned(Heap::instance().make<Number>(false, 0.0, value)); }
Owned boolean(bool value) { return Owned::retain(value ? kCFBooleanTrue : kCFBooleanFalse); }
Owned null() { return Owned::retain(kCFNull); }
Owned foreign() { return owned(Heap::instance().make<Foreign>()); }

Owned array(const std::vector<Owned>& values) {
  std::vector<CFTypeRef> items;
  for (const Owned& value : values) {
    items.push_back(value.get());
  }
  return owned(Heap::instance().make<Array>(std::move(items), true));
}

Owned dictionary(const std::vector<std::pair<std::string, Owned>>& entries) {
  std::vector<Owned> keys;
  std::vector<std::pair<CFTypeRef, CFTypeRef>> pairs;
  for (const auto& [key, value] : entries) {
    keys.push_back(text(key));
    pairs.emplace_back(keys.back().get(), value.get());
  }
  return owned(Heap::instance().make<Dictionary>(std::move(pairs)));
}

CFTypeRef emptyArray() {
  return Heap::instance().makeConstant<Array>(std::vector<CFTypeRef>(), true)->reference();
}
CFTypeRef emptyDictionary() {
  return Heap::instance()
      .makeConstant<Dictionary>(std::vector<std::pair<CFTypeRef, CFTypeRef>>())
      ->reference();
}

Owned url(std::string_view text, std::string_view base) {
  return owned(Heap::instance().make<Url>(
      toRef<CFStringRef>(Heap::instance().make<String>(decoded(text).value())), std::string(base)));
}

Owned point(double x, double y) {
  const CGPoint value{x, y};
  return Owned::adopt(AXValueCreate(kAXValueTypeCGPoint, &value));
}
Owned size(double width, double height) {
  const CGSize value{width, height};
  return Owned::adopt(AXValueCreate(kAXValueTypeCGSize, &value));
}
Owned rect(double x, double y, double width, double height) {
  const CGRect value{{x, y}, {width, height}};
  return Owned::adopt(AXValueCreate(kAXValueTypeCGRect, &value));
}
Owned axError(AXError error) { return Owned::adopt(AXValueCreate(kAXValueTypeAXError, &error)); }

}  // namespace standin

using namespace standin;

extern "C" {

const CFBooleanRef kCFBooleanTrue = toRef<CFBooleanRef>(Heap::instance().makeConstant<Truth>(true));
const CFBooleanRef kCFBooleanFalse =
    toRef<CFBooleanRef>(Heap::instance().makeConstant<Truth>(false));
const CFNullRef kCFNull = toRef<CFNullRef>(Heap::instance().makeConstant<Null>());
const CFArrayCallBacks kCFTypeArrayCallBacks{};
const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks{};
const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks{};

Boolean CFEqual(CFTypeRef first, CFTypeRef second) {
  return Heap::instance().at(first, "CFEqual").equals(Heap::instance().at(second, "CFEqual"));
}
CFTypeID CFGetTypeID(CFTypeRef object) { return Heap::instance().at(object, "CFGetTypeID").type(); }
CFTypeRef CFRetain(CFTypeRef object) {
  Heap::instance().retain(Heap::instance().at(object, "CFRetain"));
  return object;
}
void CFRelease(CFTypeRef object) {
  Heap::instance().release(Heap::instance().at(object, "CFRelease"));
}

CFTypeID CFNullGetTypeID(void) { return typeNamed("CFNull"); }
CFTypeID CFStringGetTypeID(void) { return typeNamed("CFString"); }
CFTypeID CFBooleanGetTypeID(void) { return typeNamed("CFBoolean"); }
CFTypeID CFNumberGetTypeID(void) { return typeNamed("CFNumber"); }
CFTypeID CFArrayGetTypeID(void) { return typeNamed("CFArray"); }
CFTypeID CFDictionaryGetTypeID(void) { return typeNamed("CFDictionary"); }
CFTypeID CFURLGetTypeID(void) { return typeNamed("CFURL"); }

CFIndex CFStringGetLength(CFStringRef text) {
  return static_cast<CFIndex>(as<String>(text, "CFStringGetLength").units().size());
}

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding) {
  const CFIndex widest = encoding == kCFStringEncodingUTF8 ? 3 : 2;
  return length > std::numeric_limits<CFIndex>::max() / widest ? CFIndex{kCFNotFound}
                                                               : length * widest;
}

CFIndex CFStringGetBytes(CFStringRef text, CFRange range, CFStringEncoding encoding, UInt8 lossByte,
                         Boolean /*isExternalRepresentation*/, UInt8* buffer, CFIndex bufferSize,
                         CFIndex* usedSize) {
  const std::u16string_view units =
      std::u16string_view(as<String>(text, "CFStringGetBytes").units())
          .substr(static_cast<std::size_t>(range.location), static_cast<std::size_t>(range.length));
  std::string out;
  std::size_t at = 0;
  while (at < units.size()) {
    std::string piece;
    std::size_t length = 1;
    if (encoding == kCFStringEncodingUTF16) {
      piece.assign(reinterpret_cast<const char*>(&units[at]), sizeof(char16_t));
    } else {
      char32_t codePoint = 0;
      std::tie(codePoint, length) = codePointAt(units, at);
      if (length == 0 && lossByte == 0) {
        break;
      }
      appendUtf8(length == 0 ? lossByte : codePoint, piece);
      length = std::max<std::size_t>(length, 1);
    }
    if (buffer != nullptr && out.size() + piece.size() > static_cast<std::size_t>(bufferSize)) {
      break;
    }
    out += piece;
    at += length;
  }
  if (buffer != nullptr) {
    std::copy(out.begin(), out.end(), buffer);
  }
  if (usedSize != nullptr) {
    *usedSize = static_cast<CFIndex>(out.size());
  }
  return static_cast<CFIndex>(at);
}

CFStringRef CFStringCreateWithBytes(CFAllocatorRef /*allocator*/, const UInt8* bytes, CFIndex count,
                                    CFStringEncoding /*encoding*/,
                                    Boolean /*isExternalRepresentation*/) {
  auto units = decoded({reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(count)});
  return units ? toRef<CFStringRef>(Heap::instance().make<String>(*std::move(units))) : nullptr;
}

CFStringRef __CFStringMakeConstantString(const char* text) {
  static std::mutex lock;
  static std::map<std::string, CFStringRef> literals;
  const std::lock_guard guard(lock);
  auto [literal, fresh] = literals.try_emplace(text);
  if (fresh) {
    literal->second =
        toRef<CFStringRef>(Heap::instance().makeConstant<String>(decoded(text).value()));
  }
  return literal->second;
}

Boolean CFBooleanGetValue(CFBooleanRef boolean) {
  // Anything but 0 is true in a type of eight bits.
  constexpr Boolean kOddTruth = 0x80;
  return as<Truth>(boolean, "CFBooleanGetValue").value() ? kOddTruth : Boolean{0};
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value) {
  const auto& its = as<Number>(number, "CFNumberGetValue");
  if (type == kCFNumberSInt64Type) {
    return its.read(*static_cast<SInt64*>(value));
  }
  return its.read(*static_cast<double*>(value));
}

CFNumberRef CFNumberCreate(CFAllocatorRef /*allocator*/, CFNumberType type, const void* value) {
  if (type == kCFNumberSInt64Type) {
    return toRef<CFNumberRef>(
        Heap::instance().make<Number>(false, 0.0, *static_cast<const SInt64*>(value)));
  }
  return toRef<CFNumberRef>(
      Heap::instance().make<Number>(true, *static_cast<const double*>(value), 0));
}

CFIndex CFArrayGetCount(CFArrayRef array) {
  return static_cast<CFIndex>(as<Array>(array, "CFArrayGetCount").items().size());
}
const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
  return as<Array>(array, "CFArrayGetValueAtIndex").items().at(static_cast<std::size_t>(index));
}
CFArrayRef CFArrayCreate(CFAllocatorRef /*allocator*/, const void** values, CFIndex count,
                         const CFArrayCallBacks* callBacks) {
  return toRef<CFArrayRef>(Heap::instance().make<Array>(
      std::vector<CFTypeRef>(values, values + count), callBacks == &kCFTypeArrayCallBacks));
}

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef /*allocator*/, const void** keys,
                                   const void** values, CFIndex count,
                                   const CFDictionaryKeyCallBacks* keyCallBacks,
                                   const CFDictionaryValueCallBacks* valueCallBacks) {
  if (keyCallBacks != &kCFTypeDictionaryKeyCallBacks ||
      valueCallBacks != &kCFTypeDictionaryValueCallBacks) {
    complain("a dictionary that does not hold its entries");
  }
  std::vector<std::pair<CFTypeRef, CFTypeRef>> entries;
  for (CFIndex i = 0; i < count; ++i) {
    entries.emplace_back(keys[i], values[i]);
  }
  return toRef<CFDictionaryRef>(Heap::instance().make<Dictionary>(std::move(entries)));
}
const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key) {
  return as<Dictionary>(dictionary, "CFDictionaryGetValue").find(key);
}

CFStringRef CFURLGetString(CFURLRef url) { return as<Url>(url, "CFURLGetString").text(); }
CFURLRef CFURLCopyAbsoluteURL(CFURLRef url) {
  const auto& its = as<Url>(url, "CFURLCopyAbsoluteURL");
  if (its.base() == "broken") {
    return nullptr;
  }
  return static_cast<CFURLRef>(CFRetain(standin::url(its.base() + nameOf(its.text())).get()));
}

}  // extern "C"
