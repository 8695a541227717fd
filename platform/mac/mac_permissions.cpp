#include "platform/mac/mac_permissions.h"

#include <ApplicationServices/ApplicationServices.h>
#include <CoreGraphics/CoreGraphics.h>

#include <array>

#include "platform/mac/mac_cf.h"

namespace tarqo::mac {

bool MacPermissions::accessibilityTrusted() { return AXIsProcessTrusted() != 0; }

void MacPermissions::promptForAccessibility() {
  std::array<const void*, 1> keys{kAXTrustedCheckOptionPrompt};
  std::array<const void*, 1> values{kCFBooleanTrue};
  const auto options =
      adopt(CFDictionaryCreate(nullptr, keys.data(), values.data(), keys.size(),
                               &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
  // The answer is that of before the prompt, which shows on its own.
  static_cast<void>(AXIsProcessTrustedWithOptions(options.get()));
}

// Apple's header dates both to 10.15, but they are missing there; macOS 11 has them.
bool MacPermissions::captureAccess() { return CGPreflightScreenCaptureAccess(); }

bool MacPermissions::requestCaptureAccess() { return CGRequestScreenCaptureAccess(); }

}  // namespace tarqo::mac
