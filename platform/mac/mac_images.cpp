#include "platform/mac/mac_images.h"

#include <ImageIO/ImageIO.h>

#include <cstdint>
#include <string_view>

namespace tarqo::mac {
namespace {

// The name of the PNG format in Apple's uniform type identifiers.
CFStringRef pngType() { return CFSTR("public.png"); }

constexpr CFIndex kNoLimit = 0;

// What every PNG file starts with, and the chunk that it ends with: no bytes, their name, their
// sum.
constexpr std::string_view kPngStart("\x89PNG\r\n\x1a\n", 8);
constexpr std::string_view kPngEnd("\0\0\0\0IEND\xae\x42\x60\x82", 12);

}  // namespace

std::optional<Image> imageOf(CfRef<CGImageRef> image, std::string png) {
  if (!image) {
    return std::nullopt;
  }
  Image made;
  made.widthPx = static_cast<int>(CGImageGetWidth(image.get()));
  made.heightPx = static_cast<int>(CGImageGetHeight(image.get()));
  made.pixels = std::make_shared<MacPixels>(std::move(image), std::move(png));
  return made;
}

CGImageRef cgImageOf(const Image& image) {
  const auto* pixels = dynamic_cast<const MacPixels*>(image.pixels.get());
  return pixels != nullptr ? pixels->image() : nullptr;
}

std::variant<std::string, PngError> MacImages::encodePng(const Image& image) {
  const auto* pixels = dynamic_cast<const MacPixels*>(image.pixels.get());
  if (pixels != nullptr && !pixels->png().empty()) {
    return pixels->png();
  }
  const CGImageRef source = cgImageOf(image);
  const auto data = adopt(CFDataCreateMutable(nullptr, kNoLimit));
  if (source == nullptr || !data) {
    return PngError::noEncoder;
  }
  const auto destination =
      adopt(CGImageDestinationCreateWithData(data.get(), pngType(), 1, nullptr));
  if (!destination) {
    return PngError::noEncoder;
  }
  CGImageDestinationAddImage(destination.get(), source, nullptr);
  if (!CGImageDestinationFinalize(destination.get())) {
    return PngError::failed;
  }
  const UInt8* bytes = CFDataGetBytePtr(data.get());
  return std::string(bytes, bytes + CFDataGetLength(data.get()));
}

std::optional<Image> MacImages::decodePng(const std::string& bytes) {
  // ImageIO reads every format it knows, and gives an image of half a file too: it decodes nothing
  // before the pixels are used.
  if (!bytes.starts_with(kPngStart) || !bytes.ends_with(kPngEnd)) {
    return std::nullopt;
  }
  const auto data = adopt(CFDataCreate(nullptr, reinterpret_cast<const UInt8*>(bytes.data()),
                                       static_cast<CFIndex>(bytes.size())));
  const auto source =
      data ? adopt(CGImageSourceCreateWithData(data.get(), nullptr)) : CfRef<CGImageSourceRef>();
  return source ? imageOf(adopt(CGImageSourceCreateImageAtIndex(source.get(), 0, nullptr)), bytes)
                : std::nullopt;
}

}  // namespace tarqo::mac
