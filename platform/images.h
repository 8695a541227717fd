// Images in memory, and their PNG form. Any thread; waits for nothing.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <variant>

namespace tarqo {

/// The pixels of an image in the backend's own form.
class PixelData {
 public:
  virtual ~PixelData() = default;
};

/// An image; sizes in pixels. `pixels` is never null.
struct Image {
  int widthPx = 0;
  int heightPx = 0;
  std::shared_ptr<const PixelData> pixels;
};

enum class PngError {
  noEncoder,  ///< An encoder for the image could not be made.
  failed      ///< Encoding began and failed.
};

class Images {
 public:
  virtual ~Images() = default;

  /// The image as the bytes of a PNG file.
  [[nodiscard]] virtual std::variant<std::string, PngError> encodePng(const Image& image) = 0;

  /// The image in the bytes of a PNG file; null when they are no such file.
  [[nodiscard]] virtual std::optional<Image> decodePng(const std::string& bytes) = 0;
};

}  // namespace tarqo
