// Pixels of windows. Worker thread only, but for `windowImage`, which may also run on a thread made
// by `Clock::background`.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/images.h"
#include "platform/window_server.h"

namespace tarqo {

/// The ways in which a window's pixels can be had. A system offers some, in the order to try them.
enum class CaptureTechnique {
  windowImage,    ///< `windowImage`
  commandLine,    ///< The system's capture tool, run as a child that writes a PNG file.
  displayRegion,  ///< `displayRegion`
};

/// A window as the capture service lists it.
struct ShareableWindow {
  std::optional<Pid> ownerPid;
  Rect frame;
  std::string title;  ///< Empty also when the grant does not let titles through.
};

enum class WindowImageResolution { nominal, best };

/// Null when the system reported an error.
using ShareableWindowsCompletion = std::function<void(std::optional<std::vector<ShareableWindow>>)>;
using ImageCompletion = std::function<void(std::optional<Image>)>;

class ScreenCapture {
 public:
  virtual ~ScreenCapture() = default;

  [[nodiscard]] virtual std::vector<CaptureTechnique> techniques() = 0;

  /// Whether `shareableWindows` exists on this system version.
  [[nodiscard]] virtual bool listsShareableWindows() = 0;

  /// The image of one window without its shadow; null when the system gives none. May block for as
  /// long as the system does.
  [[nodiscard]] virtual std::optional<Image> windowImage(WindowNumber window,
                                                         WindowImageResolution resolution) = 0;

  /// Lists windows with their titles. The completion is called on any thread, perhaps never.
  virtual void shareableWindows(ShareableWindowsCompletion completion) = 0;

  /// The image of a region of a display, in screen points, without the pointer. The completion is
  /// called on any thread, perhaps never. Reports an error on standard error in one line.
  virtual void displayRegion(const Screen& screen, const Rect& region,
                             ImageCompletion completion) = 0;
};

}  // namespace tarqo
