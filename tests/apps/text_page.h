// A page of text drawn as pixels, with the place of every line: what no accessibility tree reports.
#pragma once

#include <cairo.h>

#include <span>
#include <string>
#include <vector>

namespace tarqo::textpage {

/// The size the page is made for, in pixels; a larger surface stays white outside.
inline constexpr int kWidthPx = 1240;
inline constexpr int kHeightPx = 740;

/// A line to be drawn. An empty text leaves its place empty.
struct Line {
  const char* font;
  int sizePx;
  std::string text;
};

/// The page: 40 lines of Korean and English, 14 to 28 pixels high.
std::vector<Line> pageLines();

/// A line of the page and the rectangle of its ink, in pixels from the top left of the page.
struct DrawnLine {
  std::string text;
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
};

/// Draws lines of the page, from its first one, in two columns: dark on white, and the last 8 of
/// all 40 light on a dark panel. `scale` draws them as a display of so many pixels a point shows
/// them; the rectangles stay in points.
std::vector<DrawnLine> draw(cairo_t* cairo, std::span<const Line> lines, double scale = 1);

}  // namespace tarqo::textpage
