#include "tests/platform/mac/standin/images.h"

#include <ApplicationServices/ApplicationServices.h>
#include <ImageIO/ImageIO.h>

#include <sstream>
#include <utility>

#include "tests/platform/mac/standin/desktop.h"
#include "tests/platform/mac/standin/faults.h"

namespace standin {
namespace {

/// Width and height follow, anywhere in a file.
constexpr std::string_view kPicture = "picture ";

class Data final : public Object {
 public:
  explicit Data(std::string its) : bytes(std::move(its)) {}
  [[nodiscard]] CFTypeID type() const override { return typeNamed("CFData"); }
  [[nodiscard]] std::string description() const override { return "data"; }
  std::string bytes;
};

class Picture final : public Object {
 public:
  Picture(std::size_t width, std::size_t height, std::optional<tarqo::Image> its = std::nullopt)
      : pixels(std::move(its)), width_(width), height_(height) {}
  [[nodiscard]] CFTypeID type() const override { return typeNamed("CGImage"); }
  [[nodiscard]] std::string description() const override { return "an image"; }
  [[nodiscard]] std::size_t width() const { return width_; }
  [[nodiscard]] std::size_t height() const { return height_; }
  std::optional<tarqo::Image> pixels;  ///< Of the desktop.

 private:
  std::size_t width_;
  std::size_t height_;
};

/// The file of an image of the desktop; empty when it cannot be made.
std::string fileOf(const tarqo::Image& pixels) {
  const auto encoded =
      onDesktop([&](const tarqo::Platform& platform) { return platform.images.encodePng(pixels); });
  const auto* bytes = std::get_if<std::string>(&encoded);
  return bytes == nullptr ? "" : *bytes;
}

class Destination final : public Object {
 public:
  explicit Destination(CFTypeRef data) : data_(CFRetain(data)) {}
  [[nodiscard]] CFTypeID type() const override { return typeNamed("CGImageDestination"); }
  [[nodiscard]] std::string description() const override { return "a destination"; }
  void end() override { CFRelease(data_); }
  [[nodiscard]] Data& data() const { return as<Data>(data_, "CGImageDestination"); }
  std::string waiting;  ///< Reaches the data when the destination is finished.

 private:
  CFTypeRef data_;
};

class PictureSource final : public Object {
 public:
  explicit PictureSource(std::string its) : bytes(std::move(its)) {}
  [[nodiscard]] CFTypeID type() const override { return typeNamed("CGImageSource"); }
  [[nodiscard]] std::string description() const override { return "a source of images"; }
  std::string bytes;
};

CGImageRef toRefOrNull(const tarqo::mac::CfRef<CGImageRef>& image) {
  return image ? static_cast<CGImageRef>(const_cast<void*>(CFRetain(image.get()))) : nullptr;
}

}  // namespace

ImageFiles& ImageFiles::instance() {
  static ImageFiles files;
  return files;
}
void ImageFiles::reset() { *this = ImageFiles(); }

Grants& Grants::instance() {
  static Grants grants;
  return grants;
}
void Grants::reset() { *this = Grants(); }

std::string otherFile(std::size_t width, std::size_t height) {
  return std::string(kPicture) + std::to_string(width) + " " + std::to_string(height);
}
std::string pngFile(std::size_t width, std::size_t height) {
  using namespace std::string_literals;
  return "\x89PNG\r\n\x1a\n" + otherFile(width, height) + "\0\0\0\0IEND\xae\x42\x60\x82"s;
}

tarqo::mac::CfRef<CGImageRef> image(std::size_t width, std::size_t height) {
  return tarqo::mac::adopt(toRef<CGImageRef>(Heap::instance().make<Picture>(width, height)));
}

tarqo::mac::CfRef<CGImageRef> image(const std::optional<tarqo::Image>& pixels) {
  if (!pixels) {
    return {};
  }
  return tarqo::mac::adopt(toRef<CGImageRef>(
      Heap::instance().make<Picture>(static_cast<std::size_t>(pixels->widthPx),
                                     static_cast<std::size_t>(pixels->heightPx), pixels)));
}

const tarqo::Image* pixelsOf(CGImageRef image) {
  const auto& pixels = as<Picture>(image, "an image").pixels;
  return pixels ? &*pixels : nullptr;
}

}  // namespace standin

using namespace standin;

extern "C" {

CFDataRef CFDataCreate(CFAllocatorRef /*allocator*/, const UInt8* bytes, CFIndex length) {
  if (Faults::instance().next("CFDataCreate").fails()) {
    return nullptr;
  }
  if (ImageFiles::instance().refusesData) {
    return nullptr;
  }
  return toRef<CFDataRef>(Heap::instance().make<Data>(
      std::string(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length))));
}
CFMutableDataRef CFDataCreateMutable(CFAllocatorRef /*allocator*/, CFIndex capacity) {
  if (Faults::instance().next("CFDataCreateMutable").fails()) {
    return nullptr;
  }
  if (capacity != 0) {
    complain("data with a limit");
  }
  return ImageFiles::instance().refusesData
             ? nullptr
             : toRef<CFMutableDataRef>(Heap::instance().make<Data>(""));
}
const UInt8* CFDataGetBytePtr(CFDataRef data) {
  return reinterpret_cast<const UInt8*>(as<Data>(data, "CFDataGetBytePtr").bytes.data());
}
CFIndex CFDataGetLength(CFDataRef data) {
  return static_cast<CFIndex>(as<Data>(data, "CFDataGetLength").bytes.size());
}

size_t CGImageGetWidth(CGImageRef image) { return as<Picture>(image, "CGImageGetWidth").width(); }
size_t CGImageGetHeight(CGImageRef image) {
  return as<Picture>(image, "CGImageGetHeight").height();
}

CGImageDestinationRef CGImageDestinationCreateWithData(CFMutableDataRef data, CFStringRef type,
                                                       size_t count, CFDictionaryRef /*options*/) {
  if (Faults::instance().next("CGImageDestinationCreateWithData").fails()) {
    return nullptr;
  }
  ImageFiles& files = ImageFiles::instance();
  files.type = nameOf(type);
  if (count != 1) {
    complain("a file of several images");
  }
  return files.refusesDestinations
             ? nullptr
             : toRef<CGImageDestinationRef>(Heap::instance().make<Destination>(data));
}
void CGImageDestinationAddImage(CGImageDestinationRef destination, CGImageRef image,
                                CFDictionaryRef /*properties*/) {
  const tarqo::Image* pixels = pixelsOf(image);
  as<Destination>(destination, "CGImageDestinationAddImage").waiting =
      pixels != nullptr ? fileOf(*pixels)
                        : pngFile(CGImageGetWidth(image), CGImageGetHeight(image));
}
bool CGImageDestinationFinalize(CGImageDestinationRef destination) {
  if (Faults::instance().next("CGImageDestinationFinalize").fails()) {
    return false;
  }
  const auto& its = as<Destination>(destination, "CGImageDestinationFinalize");
  its.data().bytes = its.waiting;
  return !ImageFiles::instance().cannotFinish && !its.waiting.empty();
}

CGImageSourceRef CGImageSourceCreateWithData(CFDataRef data, CFDictionaryRef /*options*/) {
  if (Faults::instance().next("CGImageSourceCreateWithData").fails()) {
    return nullptr;
  }
  return ImageFiles::instance().refusesSources
             ? nullptr
             : toRef<CGImageSourceRef>(Heap::instance().make<standin::PictureSource>(
                   as<Data>(data, "CGImageSourceCreateWithData").bytes));
}
CGImageRef CGImageSourceCreateImageAtIndex(CGImageSourceRef source, size_t index,
                                           CFDictionaryRef /*options*/) {
  if (Faults::instance().next("CGImageSourceCreateImageAtIndex").fails()) {
    return nullptr;
  }
  const std::string& bytes =
      as<standin::PictureSource>(source, "CGImageSourceCreateImageAtIndex").bytes;
  if (hasDesktop()) {
    return toRefOrNull(standin::image(onDesktop(
        [&](const tarqo::Platform& platform) { return platform.images.decodePng(bytes); })));
  }
  const std::size_t at = bytes.find(kPicture);
  if (index != 0 || at == std::string::npos) {
    return nullptr;
  }
  std::istringstream numbers(bytes.substr(at + kPicture.size()));
  std::size_t width = 0;
  std::size_t height = 0;
  numbers >> width >> height;
  return toRef<CGImageRef>(Heap::instance().make<Picture>(width, height));
}

CFStringRef kAXTrustedCheckOptionPrompt = CFSTR("AXTrustedCheckOptionPrompt");

Boolean AXIsProcessTrusted(void) {
  constexpr Boolean kOddTruth = 0x80;
  const bool trusted = hasDesktop() ? onDesktop([](const tarqo::Platform& platform) {
    return platform.permissions.accessibilityTrusted();
  })
                                    : Grants::instance().trusted;
  return trusted ? kOddTruth : Boolean{0};
}
Boolean AXIsProcessTrustedWithOptions(CFDictionaryRef options) {
  CFTypeRef prompt = CFDictionaryGetValue(options, kAXTrustedCheckOptionPrompt);
  if (prompt == kCFBooleanTrue) {
    ++Grants::instance().prompts;
    onDesktop(
        [](const tarqo::Platform& platform) { platform.permissions.promptForAccessibility(); });
  }
  return AXIsProcessTrusted();
}
bool CGPreflightScreenCaptureAccess(void) {
  return hasDesktop() ? onDesktop([](const tarqo::Platform& platform) {
    return platform.permissions.captureAccess();
  })
                      : Grants::instance().capture;
}
bool CGRequestScreenCaptureAccess(void) {
  if (hasDesktop()) {
    return onDesktop([](const tarqo::Platform& platform) {
      return platform.permissions.requestCaptureAccess();
    });
  }
  Grants& grants = Grants::instance();
  ++grants.captureRequests;
  grants.capture = grants.capture || grants.captureAfterRequest;
  return grants.capture;
}

}  // extern "C"
