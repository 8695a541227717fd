#include "platform/linux/linux_images.h"

#include <utility>

namespace tarqo::lnx {
namespace {

class OwnedPixels final : public BgrxPixels {
 public:
  explicit OwnedPixels(png::Bgrx pixels) : pixels_(std::move(pixels)) {}
  [[nodiscard]] png::BgrxView view() const override { return pixels_.view(); }

 private:
  png::Bgrx pixels_;
};

PngError errorOf(png::EncodeError error) {
  switch (error) {
    case png::EncodeError::noEncoder:
      return PngError::noEncoder;
    case png::EncodeError::failed:
      return PngError::failed;
  }
  return PngError::failed;
}

}  // namespace

Image imageOf(png::Bgrx pixels) {
  const int width = pixels.widthPx;
  const int height = pixels.heightPx;
  return {width, height, std::make_shared<OwnedPixels>(std::move(pixels))};
}

std::optional<png::BgrxView> bgrxOf(const Image& image) {
  const auto* pixels = dynamic_cast<const BgrxPixels*>(image.pixels.get());
  return pixels != nullptr ? std::optional(pixels->view()) : std::nullopt;
}

std::variant<std::string, PngError> LinuxImages::encodePng(const Image& image) {
  const auto pixels = bgrxOf(image);
  if (!pixels) {
    return PngError::noEncoder;
  }
  png::Encoded encoded = png::encode(*pixels);
  if (encoded.error) {
    return errorOf(*encoded.error);
  }
  return std::move(encoded.bytes);
}

std::optional<Image> LinuxImages::decodePng(const std::string& bytes) {
  auto pixels = png::decode(bytes);
  return pixels ? std::optional(imageOf(std::move(*pixels))) : std::nullopt;
}

}  // namespace tarqo::lnx
