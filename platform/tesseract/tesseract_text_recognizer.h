// Text recognition by Tesseract: finds the lines of a window by their ink and reads each by itself.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "platform/clock.h"
#include "platform/tesseract/readers.h"
#include "platform/text_recognizer.h"

namespace tarqo::ocr {

/// Nothing is loaded before the first use. A window of 1280x800 with 40 lines takes about 1 s on
/// two cores.
///
/// Whatever a picture shows, reading it ends soon after the limit; what was read by then is the
/// result. Lines of text are read before pictures, which seldom hold any and take longest.
class TesseractTextRecognizer final : public TextRecognizer {
 public:
  static constexpr std::chrono::milliseconds kLimit{10'000};

  /// `clock` is kept by reference and outlives this. `dataFolder` holds the language data;
  /// Tesseract's own folder when it is empty. At most `cores` read at a time; 0 as in `Readers`.
  explicit TesseractTextRecognizer(Clock& clock, std::string dataFolder = {},
                                   std::chrono::milliseconds limit = kLimit, std::size_t cores = 0)
      : clock_(clock), readers_(std::move(dataFolder), cores), limit_(limit) {}

  std::variant<std::vector<RecognizedLine>, std::string> recognize(const Image& image) override;

 private:
  Clock& clock_;
  Readers readers_;
  std::chrono::milliseconds limit_;
};

}  // namespace tarqo::ocr
