// Images of this backend: rows of 32-bit pixels as the X server keeps them, and their PNG form.
#pragma once

#include <optional>

#include "platform/images.h"
#include "platform/png/png_codec.h"

namespace tarqo::lnx {

/// Pixels that can be read as blue, green, red, unused.
class BgrxPixels : public PixelData {
 public:
  [[nodiscard]] virtual png::BgrxView view() const = 0;
};

/// The image of some pixels.
[[nodiscard]] Image imageOf(png::Bgrx pixels);

/// The pixels of an image, valid as long as the image; none when another backend made it.
[[nodiscard]] std::optional<png::BgrxView> bgrxOf(const Image& image);

class LinuxImages final : public Images {
 public:
  std::variant<std::string, PngError> encodePng(const Image& image) override;
  std::optional<Image> decodePng(const std::string& bytes) override;
};

}  // namespace tarqo::lnx
