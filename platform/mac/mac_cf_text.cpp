#include "platform/mac/mac_cf_text.h"

namespace tarqo::mac {
namespace {

constexpr std::string_view kReplacementCharacter = "\xEF\xBF\xBD";

// Adds what can be converted from `from` on; the number of units that were.
CFIndex addConvertible(CFStringRef text, CFIndex from, CFIndex length, std::string& result) {
  const CFIndex room = CFStringGetMaximumSizeForEncoding(length - from, kCFStringEncodingUTF8);
  if (room <= 0) {
    return 0;
  }
  const std::size_t begin = result.size();
  result.resize(begin + static_cast<std::size_t>(room));
  CFIndex used = 0;
  // Told to lose nothing, the conversion stops before half of a surrogate pair.
  const CFIndex converted =
      CFStringGetBytes(text, {from, length - from}, kCFStringEncodingUTF8, 0, false,
                       reinterpret_cast<UInt8*>(result.data()) + begin, room, &used);
  result.resize(begin + static_cast<std::size_t>(used));
  return converted;
}

}  // namespace

std::string textOf(CFStringRef text) {
  // Not by way of a C string: a text may hold a NUL.
  std::string result;
  const CFIndex length = text == nullptr ? 0 : CFStringGetLength(text);
  if (CFStringGetMaximumSizeForEncoding(length, kCFStringEncodingUTF8) == kCFNotFound) {
    return result;
  }
  for (CFIndex at = 0; at < length;) {
    at += addConvertible(text, at, length, result);
    if (at < length) {
      result += kReplacementCharacter;
      ++at;
    }
  }
  return result;
}

CfRef<CFStringRef> makeString(std::string_view utf8) {
  return adopt(CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(utf8.data()),
                                       static_cast<CFIndex>(utf8.size()), kCFStringEncodingUTF8,
                                       false));
}

std::vector<UniChar> utf16Of(std::string_view utf8) {
  const CfRef<CFStringRef> text = makeString(utf8);
  if (!text) {
    return {};
  }
  const CFIndex length = CFStringGetLength(text.get());
  std::vector<UniChar> units(static_cast<std::size_t>(length));
  // Not an external representation, so without a byte order mark.
  CFStringGetBytes(text.get(), {0, length}, kCFStringEncodingUTF16, 0, false,
                   reinterpret_cast<UInt8*>(units.data()),
                   length * static_cast<CFIndex>(sizeof(UniChar)), nullptr);
  return units;
}

std::optional<std::string> textIn(CFTypeRef object) {
  const CFStringRef text = asString(object);
  return text == nullptr ? std::nullopt : std::optional(textOf(text));
}

std::optional<double> numberIn(CFTypeRef object) {
  const CFNumberRef number = asNumber(object);
  if (number == nullptr) {
    return std::nullopt;
  }
  double value = 0;
  // False says that digits were lost, as they are with large integers; the value is there.
  CFNumberGetValue(number, kCFNumberDoubleType, &value);
  return value;
}

std::optional<SInt64> integerIn(CFTypeRef object) {
  const CFNumberRef number = asNumber(object);
  SInt64 value = 0;
  if (number == nullptr || CFNumberGetValue(number, kCFNumberSInt64Type, &value) == 0) {
    return std::nullopt;
  }
  return value;
}

std::optional<bool> booleanIn(CFTypeRef object) {
  const CFBooleanRef boolean = asBoolean(object);
  // `Boolean` is an unsigned char, in which more than 0 and 1 fit.
  return boolean == nullptr ? std::nullopt : std::optional(CFBooleanGetValue(boolean) != 0);
}

}  // namespace tarqo::mac
