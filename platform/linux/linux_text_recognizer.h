// Text recognition by Tesseract: finds the lines of a window by their ink and reads each by itself.
#pragma once

#include <string>
#include <variant>
#include <vector>

#include "platform/linux/linux_tesseract.h"
#include "platform/text_recognizer.h"

namespace tarqo::lnx {

/// Nothing is loaded before the first use. A window of 1280x800 with 40 lines takes about 2 s.
class LinuxTextRecognizer final : public TextRecognizer {
 public:
  /// `dataFolder` holds the language data; Tesseract's own folder when it is empty.
  explicit LinuxTextRecognizer(std::string dataFolder = {}) : tesseract_(std::move(dataFolder)) {}

  std::variant<std::vector<RecognizedLine>, std::string> recognize(const Image& image) override;

 private:
  Tesseract tesseract_;
};

}  // namespace tarqo::lnx
