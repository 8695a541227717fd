// A page of text drawn as pixels, with the place of every line: what no accessibility tree tells.
#pragma once

#include <cairo.h>

#include <string>
#include <vector>

namespace tarqo::textpage {

/// The size the page is made for, in pixels; a larger surface stays white outside.
inline constexpr int kWidthPx = 1240;
inline constexpr int kHeightPx = 740;

/// A line of the page and the rectangle of its ink, in pixels from the top left of the page.
struct DrawnLine {
  std::string text;
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
};

/// Draws 40 lines of Korean and English, 14 to 28 pixels high, in two columns: dark on white, and
/// the last of them light on a dark panel. `scale` draws the page as a display of so many pixels a
/// point shows it; the rectangles stay in points.
std::vector<DrawnLine> draw(cairo_t* cairo, double scale = 1);

}  // namespace tarqo::textpage
