#include "observe/recognized_text.h"

#include <cmath>

#include "base/failure.h"
#include "session/session.h"

namespace tarqo {
namespace {

constexpr double kRowTolerance = 4.0;

bool precedes(const TextLine& a, const TextLine& b) {
  if (std::abs(a.box.minY() - b.box.minY()) > kRowTolerance) {
    return a.box.minY() < b.box.minY();
  }
  return a.box.minX() < b.box.minX();
}

}  // namespace

std::vector<TextLine> onScreen(const std::vector<RecognizedLine>& lines, const Rect& window) {
  std::vector<TextLine> mapped;
  mapped.reserve(lines.size());
  for (const RecognizedLine& line : lines) {
    mapped.push_back(
        {line.text,
         {window.minX() + line.box.minX() * window.extentX(),
          window.minY() + (1 - line.box.maxY()) * window.extentY(),
          line.box.extentX() * window.extentX(), line.box.extentY() * window.extentY()},
         line.confidence});
  }
  return mapped;
}

// "Within 4 points" is no consistent order of three lines: a row of 3 points each may run on for
// ever. Insertion by this comparison always ends, is stable, and never reads out of bounds, which
// the library's sorts do not promise for such an order.
void sortForReading(std::vector<TextLine>& lines) {
  for (std::size_t i = 1; i < lines.size(); ++i) {
    TextLine line = std::move(lines[i]);
    std::size_t place = i;
    for (; place > 0 && precedes(line, lines[place - 1]); --place) {
      lines[place] = std::move(lines[place - 1]);
    }
    lines[place] = std::move(line);
  }
}

std::vector<RecognizedLine> recognizeText(TextRecognizer& recognizer, const Image& image) {
  auto outcome = recognizer.recognize(image);
  if (const auto* error = std::get_if<std::string>(&outcome)) {
    fail(failures::kTextRecognitionFailed, {*error});
  }
  return std::get<std::vector<RecognizedLine>>(std::move(outcome));
}

}  // namespace tarqo
