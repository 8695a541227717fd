// What editors draw about their text that is no text: the caret, and wavy or dotted lines under
// words they doubt. The recogniser takes the one for a letter and loses words over the other.
//
// Any thread; nothing waits.
#pragma once

#include <vector>

#include "platform/png/png_codec.h"
#include "platform/tesseract/line_image.h"
#include "platform/tesseract/surfaces.h"

namespace tarqo::ocr {

/// Makes the caret of a black-on-white line white: a bar of one or two pixels, as black throughout
/// as ink can be, that reaches clearly above all else and at least as low. Nothing changes where
/// there is none, nor where the bar stands alone.
void removeCaret(GrayImage& line);

/// A coloured line under colourless text, by rows from the box's top left: true where a pixel is
/// part of it. Empty when there is none.
[[nodiscard]] std::vector<bool> colouredLineIn(const png::BgrxView& image, const PixelBox& box);

}  // namespace tarqo::ocr
