#include "tests/platform/tesseract/text_picture.h"

#include <pango/pangocairo.h>

#include <span>
#include <utility>

#include "platform/png/png_images.h"

namespace tarqo::ocr {
namespace {

class CopiedPixels final : public png::BgrxPixels {
 public:
  explicit CopiedPixels(const png::BgrxView& view)
      : view_(view), bytes_(view.bytes.begin(), view.bytes.end()) {
    view_.bytes = bytes_;
  }
  [[nodiscard]] png::BgrxView view() const override { return view_; }

 private:
  png::BgrxView view_;
  std::vector<std::uint8_t> bytes_;
};

}  // namespace

TextPicture::TextPicture(int widthPx, int heightPx, std::uint32_t colour)
    : surface_(cairo_image_surface_create(CAIRO_FORMAT_RGB24, widthPx, heightPx)),
      cairo_(cairo_create(surface_.get())) {
  fill({0, 0, widthPx, heightPx}, colour);
}

void TextPicture::setColour(std::uint32_t colour) {
  const auto channel = [colour](unsigned shift) { return (colour >> shift & 0xFFU) / 255.0; };
  cairo_set_source_rgb(cairo_.get(), channel(16), channel(8), channel(0));
}

TextPicture& TextPicture::fill(const PixelBox& box, std::uint32_t colour) {
  setColour(colour);
  cairo_rectangle(cairo_.get(), box.left, box.top, box.width(), box.height());
  cairo_fill(cairo_.get());
  return *this;
}

TextPicture& TextPicture::frame(const PixelBox& box, std::uint32_t colour) {
  setColour(colour);
  cairo_set_line_width(cairo_.get(), 1);
  cairo_rectangle(cairo_.get(), box.left + 0.5, box.top + 0.5, box.width() - 1, box.height() - 1);
  cairo_stroke(cairo_.get());
  return *this;
}

PixelBox TextPicture::write(int x, int y, const std::string& text, std::uint32_t colour,
                            const std::string& font) {
  setColour(colour);
  PangoLayout* layout = pango_cairo_create_layout(cairo_.get());
  PangoFontDescription* description = pango_font_description_from_string(font.c_str());
  pango_layout_set_font_description(layout, description);
  pango_font_description_free(description);
  pango_layout_set_text(layout, text.c_str(), -1);
  cairo_move_to(cairo_.get(), x, y);
  pango_cairo_show_layout(cairo_.get(), layout);
  PangoRectangle ink;
  pango_layout_get_pixel_extents(layout, &ink, nullptr);
  g_object_unref(layout);
  return {x + ink.x, y + ink.y, x + ink.x + ink.width, y + ink.y + ink.height};
}

std::vector<textpage::DrawnLine> TextPicture::drawPage(double scale) {
  return textpage::draw(cairo_.get(), textpage::pageLines(), scale);
}

png::BgrxView TextPicture::view() const {
  cairo_surface_flush(surface_.get());
  const int height = cairo_image_surface_get_height(surface_.get());
  const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(surface_.get()));
  return {cairo_image_surface_get_width(surface_.get()), height, stride,
          std::span<const std::uint8_t>(cairo_image_surface_get_data(surface_.get()),
                                        stride * static_cast<std::size_t>(height))};
}

Image TextPicture::image() const {
  const png::BgrxView pixels = view();
  return {pixels.widthPx, pixels.heightPx, std::make_shared<CopiedPixels>(pixels)};
}

std::string TextPicture::asPng() const { return png::encode(view()).bytes; }

}  // namespace tarqo::ocr
