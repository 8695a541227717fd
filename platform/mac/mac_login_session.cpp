#include "platform/mac/mac_login_session.h"

#include <CoreGraphics/CoreGraphics.h>

#include <optional>

#include "platform/mac/mac_cf.h"
#include "platform/mac/mac_cf_text.h"

namespace tarqo::mac {
namespace {

/// A flag of the session, which nothing promises to be a boolean rather than the number 0 or 1.
std::optional<bool> flagIn(CFTypeRef object) {
  if (const std::optional<bool> boolean = booleanIn(object)) {
    return boolean;
  }
  const std::optional<SInt64> number = integerIn(object);
  return number && (*number == 0 || *number == 1) ? std::optional(*number == 1) : std::nullopt;
}

}  // namespace

LoginSession readLoginSession() {
  const CfRef<CFDictionaryRef> session = adopt(CGSessionCopyCurrentDictionary());
  if (asDictionary(session.get()) == nullptr) {
    return {};
  }
  // No header names this key. It is there only while the screen is locked.
  const CFStringRef locked = CFSTR("CGSSessionScreenIsLocked");
  return {flagIn(CFDictionaryGetValue(session.get(), locked)),
          flagIn(CFDictionaryGetValue(session.get(), kCGSessionOnConsoleKey))};
}

}  // namespace tarqo::mac
