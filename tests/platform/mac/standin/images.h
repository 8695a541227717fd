// Images and their files, and the grants of the user.
#pragma once

#include <CoreGraphics/CoreGraphics.h>

#include <cstddef>
#include <optional>
#include <string>

#include "platform/images.h"
#include "tests/platform/mac/standin/core_foundation.h"

namespace standin {

/// A picture of a format that is not PNG. As the system does, it is read without looking at its
/// end.
[[nodiscard]] std::string otherFile(std::size_t width, std::size_t height);
/// What encoding gives.
[[nodiscard]] std::string pngFile(std::size_t width, std::size_t height);

class ImageFiles {
 public:
  static ImageFiles& instance();
  void reset();

  bool refusesData = false;
  bool refusesDestinations = false;
  bool refusesSources = false;
  bool cannotFinish = false;
  std::string type;  ///< Of the file that was asked for last.
};

[[nodiscard]] tarqo::mac::CfRef<CGImageRef> image(std::size_t width, std::size_t height);

/// An image of the desktop; null for none.
[[nodiscard]] tarqo::mac::CfRef<CGImageRef> image(const std::optional<tarqo::Image>& pixels);
/// Lent; null when the image has no pixels of the desktop.
[[nodiscard]] const tarqo::Image* pixelsOf(CGImageRef image);

struct Grants {
  static Grants& instance();
  void reset();

  bool trusted = false;
  bool capture = false;
  bool captureAfterRequest = false;
  int prompts = 0;  ///< Of the accessibility grant.
  int captureRequests = 0;
};

}  // namespace standin
