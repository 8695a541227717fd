// Where text may stand in a picture of a window: the lines to be read one by one.
//
// Windows are no printed pages: tables, buttons and panels make a page's layout analysis join
// columns, tear lines apart and lose light text on dark. Glyphs on one surface that stand side by
// side are a line here, whatever else is in the window.
#pragma once

#include <vector>

#include "platform/tesseract/surfaces.h"

namespace tarqo::ocr {

struct TextRegions {
  std::vector<PixelBox> lines;     ///< What looks like a line of glyphs, by their tops.
  std::vector<PixelBox> large;     ///< The same of large glyphs; a row of icons may be among them.
  std::vector<PixelBox> pictures;  ///< What has no surfaces to tell ink from: photos, noise.
};

/// Both are empty when the picture is. Any thread; some 20 ms for a window of 1280x800 pixels.
[[nodiscard]] TextRegions findTextRegions(const png::BgrxView& image);

}  // namespace tarqo::ocr
