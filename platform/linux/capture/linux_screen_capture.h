// Pixels of windows by the Composite extension.
//
// The window's outermost ancestor is redirected into memory of its own, so the image holds what the
// window and its decorations show and nothing of what lies over them, the application's own menus
// included; parts that lie off the screen are there too. It works the same with and without a
// compositor. The redirection is invisible to the user and to the application, and it is kept for
// the window last captured: a window that is redirected anew holds, where it was covered or off the
// screen, what lay there before until its application has painted it.
//
// Where a window is translucent, the image shows it over black.
#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/x11/windows.h"
#include "platform/linux/x11/x_display.h"
#include "platform/screen_capture.h"

namespace tarqo::lnx {

/// Any thread: it has a connection of its own, and one caller at a time uses it.
class LinuxScreenCapture final : public ScreenCapture {
 public:
  std::vector<CaptureTechnique> techniques() override { return {CaptureTechnique::windowImage}; }
  bool listsShareableWindows() override { return false; }

  /// None for a window that is closed, minimised or not shown, or whose pixels are indices into a
  /// table of colours. Both resolutions are the window's
  /// own pixels. Waits for the server as long as any request, and 80 ms longer for a window that is
  /// covered and was not captured last.
  std::optional<Image> windowImage(WindowNumber window, WindowImageResolution resolution) override;

  void shareableWindows(ShareableWindowsCompletion completion) override { completion({}); }
  void displayRegion(const Screen& screen, const Rect& region, ImageCompletion completion) override;

  /// What is in the way of reading pixels, as a sentence that says what to do; none when nothing.
  [[nodiscard]] std::optional<std::string> obstacle();

 private:
  struct Redirected {
    xcb_window_t window = XCB_NONE;
    std::uint64_t connection = 0;

    bool operator==(const Redirected&) const = default;
  };

  /// Sees to it that the window's pixels are kept apart from the screen's; false when the server
  /// refuses.
  bool redirect(XServer& server, const XWindows& windows, const XWindow& window);
  void forgetRedirected(XServer& server);
  /// What a redirected window shows; none when it is not redirected after all.
  [[nodiscard]] static std::optional<Image> redirectedImage(XServer& server, const XWindow& window);

  std::mutex mutex_;
  XDisplay display_;
  Redirected redirected_;
};

}  // namespace tarqo::lnx
