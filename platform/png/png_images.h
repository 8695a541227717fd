// Images as rows of 32-bit pixels in memory, and their PNG form, for backends whose system has no
// image format of its own.
#pragma once

#include <optional>

#include "platform/images.h"
#include "platform/png/png_codec.h"

namespace tarqo::png {

/// Pixels that can be read as blue, green, red, unused.
class BgrxPixels : public PixelData {
 public:
  [[nodiscard]] virtual BgrxView view() const = 0;
};

/// The image of some pixels.
[[nodiscard]] Image imageOf(Bgrx pixels);

/// The pixels of an image, valid as long as the image; none when another backend made it.
[[nodiscard]] std::optional<BgrxView> bgrxOf(const Image& image);

class PngImages final : public Images {
 public:
  std::variant<std::string, PngError> encodePng(const Image& image) override;
  std::optional<Image> decodePng(const std::string& bytes) override;
};

}  // namespace tarqo::png
