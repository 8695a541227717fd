// Pictures as the text recogniser wants them: shades of grey, dark on light, large enough.
//
// Any thread; nothing waits.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/png/png_codec.h"
#include "platform/tesseract/surfaces.h"

namespace tarqo::ocr {

/// Rows from the top, a byte a pixel, 255 is white.
struct GrayImage {
  int widthPx = 0;
  int heightPx = 0;
  std::vector<std::uint8_t> bytes;

  [[nodiscard]] std::uint8_t& at(int x, int y) {
    return bytes[static_cast<std::size_t>(y) * static_cast<std::size_t>(widthPx) +
                 static_cast<std::size_t>(x)];
  }
  [[nodiscard]] std::uint8_t at(int x, int y) const {
    return bytes[static_cast<std::size_t>(y) * static_cast<std::size_t>(widthPx) +
                 static_cast<std::size_t>(x)];
  }
};

/// What `box` of the image shows, as it is.
[[nodiscard]] GrayImage grayOf(const png::BgrxView& image, const PixelBox& box);

/// One line of text, black on white whatever its colours are.
struct LineImage {
  GrayImage pixels;  ///< The box with a white margin around it, enlarged.
  PixelBox box;      ///< Where the ink is, in pixels of the whole image.
  double scale = 1;
  int marginPx = 0;  ///< Before enlarging.
};
/// By its luminance; where ink and ground are about equally light, by the channel in which they
/// differ most. Without a caret and without coloured lines under words. Nullopt when nothing in the
/// box differs from what is around it.
[[nodiscard]] std::optional<LineImage> lineImage(const png::BgrxView& image, const PixelBox& box);

/// Enlarged by cubic interpolation: with linear interpolation letters lose more of their shape.
[[nodiscard]] GrayImage enlarged(const GrayImage& image, double scale);

}  // namespace tarqo::ocr
