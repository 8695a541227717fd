// The pixels of windows: how an X server lays them out, their conversion to the layout of images
// here, and reading them into memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "platform/geometry.h"
#include "platform/images.h"
#include "platform/linux/x11/connection.h"
#include "platform/png/png_codec.h"

namespace tarqo::lnx::capture {

struct PixelFormat {
  int bitsPerPixel = 0;      ///< In memory; some may be unused.
  int scanlinePadBits = 32;  ///< Rows are filled up to a multiple of this.
  bool bigEndian = false;    ///< The byte order of a pixel.
  /// The bits of a pixel that hold each colour; all 0 where a pixel is an index into a table of
  /// colours.
  std::uint32_t redMask = 0;
  std::uint32_t greenMask = 0;
  std::uint32_t blueMask = 0;

  [[nodiscard]] std::size_t strideBytes(int widthPx) const;

  /// Whether images here hold pixels in this very layout, so that nothing is converted.
  [[nodiscard]] bool isBgrx() const;

  /// Whether `toBgrx` can read them: pixels of 16, 24 or 32 bits, each colour in bits that lie side
  /// by side.
  [[nodiscard]] bool isReadable() const;
};

/// Rows of a readable format in the form that images here hold; `rows` has at least
/// `heightPx` times `strideBytes(widthPx)` bytes. Colours of fewer or more than 8 bits are
/// stretched or rounded so that the darkest stays 0 and the brightest becomes 255.
[[nodiscard]] png::Bgrx toBgrx(const PixelFormat& format, int widthPx, int heightPx,
                               std::span<const std::uint8_t> rows);

/// How the pixels of windows of a visual lie in memory. The masks are 0 where pixels are indices
/// into a table of colours, and for a visual that the screen does not have.
[[nodiscard]] PixelFormat pixelFormatOf(const x11::Server& server, xcb_visualid_t visual);

/// The part of a pixmap, in its own pixels, as far as the pixmap goes. Nullopt when the pixmap does
/// not exist, its format is not readable, or the part lies outside. Where the server can share
/// memory it writes straight into that of the image: 1280x800 pixels take 1 ms rather than 7 ms.
/// Pixels that must be converted take a few milliseconds more.
[[nodiscard]] std::optional<Image> readPixels(x11::Server& server, xcb_pixmap_t pixmap,
                                              const PixelFormat& format, const Rect& part);

}  // namespace tarqo::lnx::capture
