#include "platform/linux/linux_text_recognizer.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <utility>

#include "platform/linux/linux_images.h"
#include "platform/linux/linux_mixed_text.h"
#include "platform/linux/linux_text_regions.h"

namespace tarqo::lnx {
namespace {

/// Text in photos is read from twice the size, as long as that is no matter of many seconds.
constexpr double kPictureScale = 2;
constexpr int kMaxEnlargedPx = 2'000'000;
/// Tesseract refuses images that are longer on a side.
constexpr int kMaxSidePx = 32767;
/// A picture that takes longer is no text but a texture: of noise Tesseract makes hundreds of
/// lines.
constexpr std::chrono::seconds kPictureLimit(3);
/// What it sees in textures and icons scores less.
constexpr float kMinPictureConfidence = 75;

using Language = Tesseract::Language;

class PictureReader {
 public:
  PictureReader(Tesseract& tesseract, const png::BgrxView& image)
      : tesseract_(tesseract), image_(image) {}

  [[nodiscard]] std::vector<RecognizedLine> read() {
    const TextRegions regions = findTextRegions(image_);
    std::vector<PixelBox> headlines;
    for (const PixelBox& line : regions.large) {
      if (readLine(line, kMinPictureConfidence)) {
        headlines.push_back(line);
      }
    }
    for (const PixelBox& line : regions.lines) {
      // What is inside large letters is a part of them.
      const bool isPart = std::ranges::any_of(
          headlines, [&](const PixelBox& headline) { return headline.contains(line); });
      if (!isPart) {
        readLine(line, 0);
      }
    }
    for (const PixelBox& picture : regions.pictures) {
      readPicture(picture);
    }
    return std::move(lines_);
  }

 private:
  /// Whether there is text in the box that is as sure as that.
  bool readLine(const PixelBox& box, float minConfidence) {
    const LineImage line = lineImage(image_, box);
    std::string text;
    float confidence = 100;
    for (const ReadText& part : tesseract_.readLine(line.pixels, Language::koreanAndEnglish)) {
      text += (text.empty() ? "" : " ") + part.text;
      confidence = std::min(confidence, part.confidence);
    }
    if (text.empty() || confidence < minConfidence) {
      return false;
    }
    add(repaired(text, line.pixels), line.box, confidence);
    return true;
  }

  /// The text after a second look in one language, where that may be better.
  std::string repaired(std::string text, const GrayImage& line) {
    std::vector<ReadWord> words;
    for (const ReadText& word : tesseract_.lastWords()) {
      words.push_back({word.text, word.confidence});
    }
    if (hasDoubtfulWord(text, words)) {
      text = withKoreanWords(text, words, readAgain(line, Language::korean));
    }
    if (endsInExtension(text)) {
      text = withExtension(text, readAgain(line, Language::english));
    }
    return text;
  }

  std::string readAgain(const GrayImage& line, Language language) {
    const std::vector<ReadText> read = tesseract_.readLine(line, language);
    return read.size() == 1 ? read.front().text : "";
  }

  void readPicture(const PixelBox& box) {
    if (std::max(box.width(), box.height()) > kMaxSidePx) {
      return;
    }
    const double scale =
        box.height() <= kMaxEnlargedPx / std::max(box.width(), 1) ? kPictureScale : 1;
    const GrayImage pixels = enlarged(grayOf(image_, box), scale);
    for (const ReadText& read : tesseract_.readScattered(pixels, kPictureLimit)) {
      const auto inImage = [scale](int px) { return static_cast<int>(px / scale); };
      if (read.confidence >= kMinPictureConfidence) {
        add(read.text,
            {box.left + inImage(read.box.left), box.top + inImage(read.box.top),
             box.left + inImage(read.box.right), box.top + inImage(read.box.bottom)},
            read.confidence);
      }
    }
  }

  void add(std::string text, const PixelBox& box, float confidence) {
    const double width = image_.widthPx;
    const double height = image_.heightPx;
    lines_.push_back(
        {std::move(text),
         {box.left / width, 1 - box.bottom / height, box.width() / width, box.height() / height},
         std::clamp(confidence / 100, 0.0F, 1.0F)});
  }

  Tesseract& tesseract_;
  const png::BgrxView& image_;
  std::vector<RecognizedLine> lines_;
};

}  // namespace

std::variant<std::vector<RecognizedLine>, std::string> LinuxTextRecognizer::recognize(
    const Image& image) {
  try {
    const auto pixels = bgrxOf(image);
    if (!pixels || pixels->widthPx <= 0 || pixels->heightPx <= 0) {
      return "Text in pictures cannot be read: this picture has no pixels.";
    }
    if (auto missing = tesseract_.prepare()) {
      return std::move(*missing);
    }
    return PictureReader(tesseract_, *pixels).read();
  } catch (const std::exception& error) {
    return std::string("Text in pictures cannot be read: ") + error.what();
  } catch (...) {
    return "Text in pictures cannot be read: Tesseract failed.";
  }
}

}  // namespace tarqo::lnx
