// Text recognition by Tesseract: finds the lines of a window by their ink and reads each by itself.
#pragma once

#include <chrono>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "platform/clock.h"
#include "platform/tesseract/tesseract.h"
#include "platform/text_recognizer.h"

namespace tarqo::ocr {

/// Nothing is loaded before the first use. A window of 1280x800 with 40 lines takes about 2 s.
///
/// Whatever a picture shows, reading it ends soon after the limit; what was read by then is the
/// result. Lines of text are read before pictures, which seldom hold any and take longest.
class TesseractTextRecognizer final : public TextRecognizer {
 public:
  static constexpr std::chrono::milliseconds kLimit{10'000};

  /// `clock` is kept by reference and outlives this. `dataFolder` holds the language data;
  /// Tesseract's own folder when it is empty.
  explicit TesseractTextRecognizer(Clock& clock, std::string dataFolder = {},
                                   std::chrono::milliseconds limit = kLimit)
      : clock_(clock), tesseract_(std::move(dataFolder)), limit_(limit) {}

  std::variant<std::vector<RecognizedLine>, std::string> recognize(const Image& image) override;

 private:
  Clock& clock_;
  Tesseract tesseract_;
  std::chrono::milliseconds limit_;
};

}  // namespace tarqo::ocr
