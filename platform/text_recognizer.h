// Optical character recognition. Worker thread only; takes seconds on a large image, and may use
// further threads meanwhile.
#pragma once

#include <string>
#include <variant>
#include <vector>

#include "platform/geometry.h"
#include "platform/images.h"

namespace tarqo {

/// One recognised line. `box` is normalised to 0...1 of the image, origin at its bottom left.
struct RecognizedLine {
  std::string text;
  Rect box;
  float confidence = 0;  ///< 0...1
};

class TextRecognizer {
 public:
  virtual ~TextRecognizer() = default;

  /// The lines in the order of recognition, Korean preferred to English; or the error text when the
  /// image could not be read. An image without text gives no lines.
  [[nodiscard]] virtual std::variant<std::vector<RecognizedLine>, std::string> recognize(
      const Image& image) = 0;
};

}  // namespace tarqo
