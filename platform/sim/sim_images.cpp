#include "platform/sim/sim_images.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tarqo::sim {
namespace {

const Pixels* pixelsOf(const Image& image) {
  return dynamic_cast<const Pixels*>(image.pixels.get());
}

}  // namespace

png::Bgrx filled(int widthPx, int heightPx, Colour colour) {
  png::Bgrx image{std::max(widthPx, 1), std::max(heightPx, 1), {}};
  const auto count =
      static_cast<std::size_t>(image.widthPx) * static_cast<std::size_t>(image.heightPx);
  image.bytes.reserve(count * 4);
  const std::uint8_t pixel[] = {colour.blue, colour.green, colour.red, 0};
  for (std::size_t i = 0; i < count; ++i) {
    image.bytes.insert(image.bytes.end(), std::begin(pixel), std::end(pixel));
  }
  return image;
}

void paint(png::Bgrx& image, const Rect& area, Colour colour) {
  const Rect inside = area.intersection(
      {0, 0, static_cast<double>(image.widthPx), static_cast<double>(image.heightPx)});
  const auto left = static_cast<std::size_t>(std::lround(inside.minX()));
  const auto right = static_cast<std::size_t>(std::lround(inside.maxX()));
  const auto top = static_cast<std::size_t>(std::lround(inside.minY()));
  const auto bottom = static_cast<std::size_t>(std::lround(inside.maxY()));
  const std::uint8_t pixel[] = {colour.blue, colour.green, colour.red, 0};
  for (std::size_t y = top; y < bottom; ++y) {
    for (std::size_t x = left; x < right; ++x) {
      const std::size_t at = (y * static_cast<std::size_t>(image.widthPx) + x) * 4;
      std::copy(std::begin(pixel), std::end(pixel),
                image.bytes.begin() + static_cast<std::ptrdiff_t>(at));
    }
  }
}

Image imageOf(png::Bgrx pixels) {
  const int width = pixels.widthPx;
  const int height = pixels.heightPx;
  return {width, height, std::make_shared<const Pixels>(std::move(pixels))};
}

std::optional<Colour> pixelAt(const Image& image, int x, int y) {
  const Pixels* pixels = pixelsOf(image);
  if (pixels == nullptr || x < 0 || y < 0 || x >= image.widthPx || y >= image.heightPx) {
    return std::nullopt;
  }
  const auto at = (static_cast<std::size_t>(y) * static_cast<std::size_t>(image.widthPx) +
                   static_cast<std::size_t>(x)) *
                  4;
  const auto& bytes = pixels->bgrx().bytes;
  return Colour{bytes[at + 2], bytes[at + 1], bytes[at]};
}

std::variant<std::string, PngError> ImagesService::encodePng(const Image& image) {
  if (encodingFails) {
    return *encodingFails;
  }
  const Pixels* pixels = pixelsOf(image);
  if (pixels == nullptr) {
    return PngError::noEncoder;
  }
  png::Encoded encoded = png::encode(pixels->bgrx().view());
  if (encoded.error) {
    return *encoded.error == png::EncodeError::noEncoder ? PngError::noEncoder : PngError::failed;
  }
  return std::move(encoded.bytes);
}

std::optional<Image> ImagesService::decodePng(const std::string& bytes) {
  std::optional<png::Bgrx> pixels = png::decode(bytes);
  return pixels ? std::optional(imageOf(*std::move(pixels))) : std::nullopt;
}

std::variant<std::vector<RecognizedLine>, std::string> TextRecognizerService::recognize(
    const Image& /*image*/) {
  ++recognitions_;
  clock_.advance(takes);
  if (error) {
    return *error;
  }
  return lines;
}

}  // namespace tarqo::sim
