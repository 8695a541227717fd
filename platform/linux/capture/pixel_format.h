// How an X server lays out the pixels of a window, and their conversion. Pure functions.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/png/png_codec.h"

namespace tarqo::lnx {

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

  /// Whether such pixels are what images here hold, with nothing to convert.
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

}  // namespace tarqo::lnx
