#include "platform/png/png_images.h"

#include <utility>

namespace tarqo::png {
namespace {

class OwnedPixels final : public BgrxPixels {
 public:
  explicit OwnedPixels(Bgrx pixels) : pixels_(std::move(pixels)) {}
  [[nodiscard]] BgrxView view() const override { return pixels_.view(); }

 private:
  Bgrx pixels_;
};

PngError errorOf(EncodeError error) {
  switch (error) {
    case EncodeError::noEncoder:
      return PngError::noEncoder;
    case EncodeError::failed:
      return PngError::failed;
  }
  return PngError::failed;
}

}  // namespace

Image imageOf(Bgrx pixels) {
  const int width = pixels.widthPx;
  const int height = pixels.heightPx;
  return {width, height, std::make_shared<OwnedPixels>(std::move(pixels))};
}

std::optional<BgrxView> bgrxOf(const Image& image) {
  const auto* pixels = dynamic_cast<const BgrxPixels*>(image.pixels.get());
  return pixels != nullptr ? std::optional(pixels->view()) : std::nullopt;
}

std::variant<std::string, PngError> PngImages::encodePng(const Image& image) {
  const auto pixels = bgrxOf(image);
  if (!pixels) {
    return PngError::noEncoder;
  }
  Encoded encoded = encode(*pixels);
  if (encoded.error) {
    return errorOf(*encoded.error);
  }
  return std::move(encoded.bytes);
}

std::optional<Image> PngImages::decodePng(const std::string& bytes) {
  auto pixels = decode(bytes);
  return pixels ? std::optional(imageOf(std::move(*pixels))) : std::nullopt;
}

}  // namespace tarqo::png
