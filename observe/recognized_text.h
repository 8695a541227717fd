// Lines of recognised text on the screen.
#pragma once

#include <vector>

#include "platform/text_recognizer.h"

namespace tarqo {

/// A recognised line with its rectangle in screen points.
struct TextLine {
  std::string text;
  Rect box;
  float confidence = 0;
};

/// The lines of text in an image. Throws "ocr_failed". Takes seconds.
[[nodiscard]] std::vector<RecognizedLine> recognizeText(TextRecognizer& recognizer,
                                                        const Image& image);

/// Recognised lines mapped from the image into the window it shows.
[[nodiscard]] std::vector<TextLine> onScreen(const std::vector<RecognizedLine>& lines,
                                             const Rect& window);

/// Sorts into reading order: by rows whose tops lie within 4 points, inside a row from the left.
/// Lines that compare equal keep their order.
void sortForReading(std::vector<TextLine>& lines);

}  // namespace tarqo
