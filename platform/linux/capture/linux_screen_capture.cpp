#include "platform/linux/capture/linux_screen_capture.h"

#include <xcb/composite.h>

#include <algorithm>
#include <chrono>
#include <vector>

#include "platform/linux/capture/overlay.h"
#include "platform/linux/capture/window_pixels.h"
#include "platform/linux/x11/window_reader.h"

namespace tarqo::lnx::capture {
namespace {

/// How long an application is given to paint what was covered. Most need 20 ms.
constexpr std::chrono::milliseconds kRepaintTime{80};

/// Whether the screen lacks some of the window's pixels.
bool isPartlyUnseen(const x11::Windows& windows, const x11::Window& window) {
  if (!windows.screen.contains(window.outermostArea)) {
    return true;
  }
  for (const x11::Window& other : windows.frontToBack) {
    if (other.outermost == window.outermost) {
      return false;
    }
    if (other.viewable && other.outermostArea.intersects(window.outermostArea)) {
      return true;
    }
  }
  return false;
}

}  // namespace

bool LinuxScreenCapture::redirect(x11::Server& server, const x11::Windows& windows,
                                  const x11::Window& window) {
  const Redirected wanted{window.outermost, server.serial()};
  if (redirected_ == wanted) {
    return true;
  }
  forgetRedirected(server);
  if (!server.succeeded(xcb_composite_redirect_window_checked(server.raw(), window.outermost,
                                                              XCB_COMPOSITE_REDIRECT_AUTOMATIC))) {
    return false;
  }
  redirected_ = wanted;
  if (isPartlyUnseen(windows, window)) {
    clock_.sleep(kRepaintTime);
  }
  return true;
}

void LinuxScreenCapture::forgetRedirected(x11::Server& server) {
  if (redirected_.connection == server.serial()) {
    xcb_composite_unredirect_window(server.raw(), redirected_.window,
                                    XCB_COMPOSITE_REDIRECT_AUTOMATIC);
  }
  redirected_ = {};
}

std::optional<Image> LinuxScreenCapture::redirectedImage(x11::Server& server,
                                                         const x11::Window& window) {
  xcb_connection_t* c = server.raw();
  const xcb_pixmap_t pixmap = xcb_generate_id(c);
  xcb_composite_name_window_pixmap(c, window.outermost, pixmap);
  Rect part = window.frame;
  part.x -= window.outermostArea.x;
  part.y -= window.outermostArea.y;
  auto image = readPixels(server, pixmap, pixelFormatOf(server, window.outermostVisual), part);
  xcb_free_pixmap(c, pixmap);
  server.sync();
  return image;
}

/// A popup is uppermost, so nothing of it is unseen when it is redirected.
Image LinuxScreenCapture::withPopups(x11::Server& server, const x11::Windows& windows,
                                     const x11::Window& window, const Image& image) {
  std::vector<Overlay> overlays;
  for (const x11::Window& popup : windows.frontToBack) {
    if (popup.outermost == window.outermost) {
      break;
    }
    const bool isOver = popup.overrideRedirect && popup.viewable && popup.pid == window.pid &&
                        popup.frame.intersects(window.frame);
    if (!isOver || !server.succeeded(xcb_composite_redirect_window_checked(
                       server.raw(), popup.outermost, XCB_COMPOSITE_REDIRECT_AUTOMATIC))) {
      continue;
    }
    if (auto picture = redirectedImage(server, popup)) {
      overlays.push_back({*std::move(picture), static_cast<int>(popup.frame.x - window.frame.x),
                          static_cast<int>(popup.frame.y - window.frame.y)});
    }
    xcb_composite_unredirect_window(server.raw(), popup.outermost,
                                    XCB_COMPOSITE_REDIRECT_AUTOMATIC);
  }
  std::reverse(overlays.begin(), overlays.end());
  return withOverlays(image, overlays);
}

std::optional<Image> LinuxScreenCapture::windowImage(WindowNumber number,
                                                     WindowImageResolution /*resolution*/) {
  const std::lock_guard lock(mutex_);
  x11::Server* server = display_.server();
  if (server == nullptr || !server->extensions().composite) {
    return std::nullopt;
  }
  const x11::Windows windows = x11::readWindows(*server);
  const x11::Window* window = x11::findWindow(windows, number);
  if (window == nullptr || !window->viewable || !redirect(*server, windows, *window)) {
    return std::nullopt;
  }
  auto image = redirectedImage(*server, *window);
  if (!image) {
    // The server gives the window numbers of an application that has ended to the next one that
    // starts, so this may be another window than was redirected under its number.
    forgetRedirected(*server);
    if (redirect(*server, windows, *window)) {
      image = redirectedImage(*server, *window);
    }
  }
  if (image && popups_ != nullptr && popups_->areShownOver(number)) {
    image = withPopups(*server, windows, *window, *image);
  }
  return image;
}

void LinuxScreenCapture::displayRegion(const Screen& /*screen*/, const Rect& /*region*/,
                                       ImageCompletion completion) {
  completion(std::nullopt);
}

std::optional<std::string> LinuxScreenCapture::obstacle() {
  const std::lock_guard lock(mutex_);
  const x11::Server* server = display_.server();
  if (server == nullptr) {
    return "No X11 display can be reached. Start the helper inside a graphical session, with "
           "DISPLAY set, then run again.";
  }
  if (!server->extensions().composite) {
    return "The X server does not offer the Composite extension, which reading a window's pixels "
           "needs. Enable it in the server's configuration, then run again.";
  }
  if (!pixelFormatOf(*server, server->screen().root_visual).isReadable()) {
    return "The screen keeps its pixels in a form that cannot be read: only 16, 24 or 32 bits for "
           "each, with colours of their own, can. Set the X server to a depth of 24, then run "
           "again.";
  }
  return std::nullopt;
}

}  // namespace tarqo::lnx::capture
