// Pixels of windows by the Composite extension.
//
// The window's outermost ancestor is redirected into memory of its own, so the image holds what the
// window and its decorations show and nothing of what lies over them, the application's own menus
// included, unless they are told to be pictured; parts that lie off the screen are there too. It
// works the same with and without a
// compositor. Neither the user nor the application sees the redirection. It is kept for the window
// last captured: a newly redirected window shows, where it was covered or off the screen, what lay
// there before, until its application has painted it.
//
// Where a window is translucent, the image shows it over black.
#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/pictured_popups.h"
#include "platform/linux/x11/windows.h"
#include "platform/screen_capture.h"

namespace tarqo::lnx::capture {

/// Any thread: it has a connection of its own, and one caller at a time uses it.
class LinuxScreenCapture final : public ScreenCapture {
 public:
  /// `clock` is kept by reference; see `x11::Display` for how long.
  /// So is `popups`, without which no popup is pictured.
  explicit LinuxScreenCapture(Clock& clock, const x11::PicturedPopups* popups = nullptr)
      : clock_(clock), popups_(popups), display_(clock) {}

  std::vector<CaptureTechnique> techniques() override { return {CaptureTechnique::windowImage}; }
  bool listsShareableWindows() override { return false; }

  /// Nullopt for a window that is closed, minimised or not shown, or whose pixels are indices into
  /// a table of colours. Both resolutions are the window's own pixels. Waits for the server as long
  /// as any request, and 80 ms longer for a window that is covered and was not the last one
  /// captured.
  std::optional<Image> windowImage(WindowNumber window, WindowImageResolution resolution) override;

  void shareableWindows(ShareableWindowsCompletion completion) override { completion({}); }
  void displayRegion(const Screen& screen, const Rect& region, ImageCompletion completion) override;

  /// Why pixels cannot be read, as a sentence that says what to do; nullopt when they can.
  [[nodiscard]] std::optional<std::string> obstacle();

 private:
  struct Redirected {
    xcb_window_t window = XCB_NONE;
    std::uint64_t connection = 0;

    bool operator==(const Redirected&) const = default;
  };

  /// Makes the server keep the window's pixels apart from the screen's; false when it refuses.
  bool redirect(x11::Server& server, const x11::Windows& windows, const x11::Window& window);
  void forgetRedirected(x11::Server& server);
  /// What a redirected window shows; nullopt when it is not redirected after all.
  [[nodiscard]] static std::optional<Image> redirectedImage(x11::Server& server,
                                                            const x11::Window& window);

  /// The picture with the popups of the same process that lie over the window.
  [[nodiscard]] static Image withPopups(x11::Server& server, const x11::Windows& windows,
                                        const x11::Window& window, const Image& image);

  Clock& clock_;
  const x11::PicturedPopups* popups_;
  std::mutex mutex_;
  x11::Display display_;
  Redirected redirected_;
};

}  // namespace tarqo::lnx::capture
