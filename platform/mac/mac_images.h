// Images as Core Graphics holds them, PNG by ImageIO.
#pragma once

#include <CoreGraphics/CoreGraphics.h>

#include <utility>

#include "platform/images.h"
#include "platform/mac/mac_cf.h"

namespace tarqo::mac {

/// Holds the image for as long as anybody needs it, a caller that stopped waiting included.
class MacPixels final : public PixelData {
 public:
  explicit MacPixels(CfRef<CGImageRef> image) : image_(std::move(image)) {}

  [[nodiscard]] CGImageRef image() const { return image_.get(); }

 private:
  CfRef<CGImageRef> image_;
};

/// None for no image.
[[nodiscard]] std::optional<Image> imageOf(CfRef<CGImageRef> image);

/// Lent; null for an image of another backend.
[[nodiscard]] CGImageRef cgImageOf(const Image& image);

class MacImages final : public Images {
 public:
  std::variant<std::string, PngError> encodePng(const Image& image) override;
  std::optional<Image> decodePng(const std::string& bytes) override;
};

}  // namespace tarqo::mac
