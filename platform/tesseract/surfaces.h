// What stands out from the flat surfaces of a picture: glyphs, icons, borders.
//
// Windows are drawn as text on surfaces of one colour or of slowly changing colours. Finding these
// surfaces separates ink from ground whatever the colours are, even light on dark, on a selected
// row or on a gradient, where one threshold for the whole picture loses the text.
//
// Any thread; some 10 ms for a window of 1280x800 pixels.
#pragma once

#include <vector>

#include "platform/png/png_codec.h"

namespace tarqo::ocr {

/// Pixels from `left` and `top` up to, but without, `right` and `bottom`.
struct PixelBox {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;

  [[nodiscard]] int width() const { return right - left; }
  [[nodiscard]] int height() const { return bottom - top; }
  void add(const PixelBox& other);
  [[nodiscard]] bool contains(const PixelBox& other) const {
    return left <= other.left && top <= other.top && right >= other.right && bottom >= other.bottom;
  }
  bool operator==(const PixelBox&) const = default;
};

/// Ink that hangs together.
struct InkPart {
  PixelBox box;
  int areaPx = 0;
  int surface = -1;      ///< The number of the surface it stands on; -1 when on no surface.
  bool divides = false;  ///< It touches several surfaces, as the border of a button does.
  bool isSolid = false;  ///< It has an area like a surface in it, as large letters and icons do.
};

/// The parts by their tops; empty for a picture without pixels.
[[nodiscard]] std::vector<InkPart> findInk(const png::BgrxView& image);

}  // namespace tarqo::ocr
