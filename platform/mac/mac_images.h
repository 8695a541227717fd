// Images as Core Graphics holds them, PNG by ImageIO.
#pragma once

#include <CoreGraphics/CoreGraphics.h>

#include <string>
#include <utility>

#include "platform/images.h"
#include "platform/mac/mac_cf.h"

namespace tarqo::mac {

/// Holds the image for as long as anybody needs it, a caller that stopped waiting included.
class MacPixels final : public PixelData {
 public:
  explicit MacPixels(CfRef<CGImageRef> image, std::string png = "")
      : image_(std::move(image)), png_(std::move(png)) {}

  [[nodiscard]] CGImageRef image() const { return image_.get(); }
  /// The file that it was read from; empty when there was none.
  [[nodiscard]] const std::string& png() const { return png_; }

 private:
  CfRef<CGImageRef> image_;
  std::string png_;
};

/// None for no image.
[[nodiscard]] std::optional<Image> imageOf(CfRef<CGImageRef> image, std::string png = "");

/// Lent; null for an image of another backend.
[[nodiscard]] CGImageRef cgImageOf(const Image& image);

class MacImages final : public Images {
 public:
  /// An image that was read from a file is that file.
  std::variant<std::string, PngError> encodePng(const Image& image) override;
  std::optional<Image> decodePng(const std::string& bytes) override;
};

}  // namespace tarqo::mac
