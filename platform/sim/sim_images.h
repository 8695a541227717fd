// Images of the simulated desktop, and its text recognition.
#pragma once

#include <string>
#include <vector>

#include "platform/images.h"
#include "platform/png/png_codec.h"
#include "platform/sim/sim_clock.h"
#include "platform/sim/sim_windows.h"
#include "platform/text_recognizer.h"

namespace tarqo::sim {

/// The pixels of every image of the simulated desktop.
class Pixels final : public PixelData {
 public:
  explicit Pixels(png::Bgrx pixels) : pixels_(std::move(pixels)) {}
  [[nodiscard]] const png::Bgrx& bgrx() const { return pixels_; }

 private:
  png::Bgrx pixels_;
};

/// An image of one colour. Sizes below 1 become 1.
[[nodiscard]] png::Bgrx filled(int widthPx, int heightPx, Colour colour);
/// Paints the part of `area` (pixels) that lies inside the image.
void paint(png::Bgrx& image, const Rect& area, Colour colour);
[[nodiscard]] Image imageOf(png::Bgrx pixels);
/// The colour of a pixel; null outside the image and for an image of another backend.
[[nodiscard]] std::optional<Colour> pixelAt(const Image& image, int x, int y);

class ImagesService final : public Images {
 public:
  /// The fault: what every encoding fails with.
  std::optional<PngError> encodingFails;

  [[nodiscard]] std::variant<std::string, PngError> encodePng(const Image& image) override;
  [[nodiscard]] std::optional<Image> decodePng(const std::string& bytes) override;
};

class TextRecognizerService final : public TextRecognizer {
 public:
  explicit TextRecognizerService(VirtualClock& clock) : clock_(clock) {}

  // The scene: what is recognised in any image.
  std::vector<RecognizedLine> lines;
  std::optional<std::string> error;
  Duration takes{};

  [[nodiscard]] std::variant<std::vector<RecognizedLine>, std::string> recognize(
      const Image& image) override;
  [[nodiscard]] int recognitions() const { return recognitions_; }

 private:
  VirtualClock& clock_;
  int recognitions_ = 0;
};

}  // namespace tarqo::sim
