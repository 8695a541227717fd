// Where text may stand in a picture of a window: the lines to be read one by one.
//
// The layout analysis for printed pages fails on windows: because of tables, buttons and panels it
// joins columns, tears lines apart and loses light text on dark. Here glyphs that stand side by
// side on one surface are a line, whatever else is in the window.
#pragma once

#include <vector>

#include "platform/tesseract/surfaces.h"

namespace tarqo::ocr {

struct TextRegions {
  std::vector<PixelBox> lines;  ///< What looks like a line of glyphs, by their tops.
  std::vector<PixelBox> large;  ///< The same of large glyphs; a row of icons may be among them.
  std::vector<PixelBox>
      pictures;  ///< Areas without surfaces that ink could stand on: photos, noise.
};

/// All are empty when the picture is. Any thread; some 20 ms for a window of 1280x800 pixels.
[[nodiscard]] TextRegions findTextRegions(const png::BgrxView& image);

}  // namespace tarqo::ocr
