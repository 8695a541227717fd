// Pixels of windows: the system's capture tool and ScreenCaptureKit, or the older window image.
#pragma once

#include "platform/screen_capture.h"

namespace tarqo::mac {

class MacScreenCapture final : public ScreenCapture {
 public:
  /// From macOS 14 on the capture tool, then ScreenCaptureKit; before that the window image.
  std::vector<CaptureTechnique> techniques() override;

  /// From macOS 14 on, where the list is what shows a grant without effect.
  bool listsShareableWindows() override;

  /// None on systems that no longer have the function.
  std::optional<Image> windowImage(WindowNumber window, WindowImageResolution resolution) override;
  void shareableWindows(ShareableWindowsCompletion completion) override;

  /// Begun on the main queue, so the main loop must run.
  void displayRegion(const Screen& screen, const Rect& region, ImageCompletion completion) override;
};

}  // namespace tarqo::mac
