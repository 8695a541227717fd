// Text recognition by Vision.
#pragma once

#include "platform/text_recognizer.h"

namespace tarqo::mac {

class MacTextRecognizer final : public TextRecognizer {
 public:
  /// The first call also loads the model, which takes seconds.
  std::variant<std::vector<RecognizedLine>, std::string> recognize(const Image& image) override;
};

}  // namespace tarqo::mac
