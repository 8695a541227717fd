// The two grants the helper needs: checked, asked for once, and distinguished from stale ones.
#pragma once

#include <initializer_list>
#include <optional>
#include <string_view>

#include "base/failure.h"
#include "host/responsible_host.h"
#include "platform/platform.h"

namespace tarqo {

/// Worker thread only. The system's prompts are asked for at most once in the life of the object.
class Grants {
 public:
  Grants(const Platform& platform, HostFinder& hosts) : platform_(platform), hosts_(hosts) {}

  /// Throws "ax_not_trusted", with what to switch on and where.
  void requireAccessibility();

  /// Throws "screen_capture_denied", with what to switch on and where.
  void requireScreenCapture();

  /// Whether a grant that is listed has an effect: other applications' windows can really be seen.
  /// Waits up to 4 s (3 × 2 s on systems without a list of shareable windows) the first time; a
  /// conclusive answer is remembered for the life of the process.
  [[nodiscard]] bool screenCaptureWorks();

  /// The failure that `screenCaptureWorks` being false means.
  [[nodiscard]] Failure screenCaptureStale();

 private:
  Failure permissionFailure(const FailureText& text,
                            std::initializer_list<std::string_view> fillings,
                            std::string_view permission);
  bool probeShareableWindows();
  std::optional<bool> probeWindowImages();

  const Platform& platform_;
  HostFinder& hosts_;
  bool accessibilityPrompted_ = false;
  bool screenCapturePrompted_ = false;
  std::optional<bool> screenCaptureProbe_;
};

}  // namespace tarqo
