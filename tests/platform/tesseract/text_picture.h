// Pictures with text in them, drawn for the tests of text recognition.
#pragma once

#include <cairo.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/images.h"
#include "platform/png/png_codec.h"
#include "platform/tesseract/surfaces.h"
#include "tests/apps/text_page.h"

namespace tarqo::ocr {

/// A picture that starts as one colour, 0xRRGGBB.
class TextPicture {
 public:
  TextPicture(int widthPx, int heightPx, std::uint32_t colour);

  TextPicture& fill(const PixelBox& box, std::uint32_t colour);
  /// A border of one pixel.
  TextPicture& frame(const PixelBox& box, std::uint32_t colour);
  /// Writes text with its top left corner there, and gives the box of its ink. `font` is as Pango
  /// writes fonts.
  PixelBox write(int x, int y, const std::string& text, std::uint32_t colour = 0x202020,
                 const std::string& font = "DejaVu Sans 14px");
  /// The page of the test application.
  std::vector<textpage::DrawnLine> drawPage(double scale = 1);

  [[nodiscard]] png::BgrxView view() const;
  /// The pixels as of now.
  [[nodiscard]] Image image() const;
  [[nodiscard]] std::string asPng() const;

 private:
  struct Free {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    void operator()(cairo_t* cairo) const { cairo_destroy(cairo); }
  };

  void setColour(std::uint32_t colour);

  std::unique_ptr<cairo_surface_t, Free> surface_;
  std::unique_ptr<cairo_t, Free> cairo_;
};

}  // namespace tarqo::ocr
