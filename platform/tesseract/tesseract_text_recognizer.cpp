#include "platform/tesseract/tesseract_text_recognizer.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <optional>
#include <utility>

#include "platform/png/png_images.h"
#include "platform/tesseract/mixed_text.h"
#include "platform/tesseract/text_regions.h"

namespace tarqo::ocr {
namespace {

using std::chrono::milliseconds;

/// Text in photos is read at twice the size, unless that would take many seconds.
constexpr double kPictureScale = 2;
constexpr int kMaxEnlargedPx = 2'000'000;
/// Tesseract refuses images that are longer on a side.
constexpr int kMaxSidePx = 32767;
/// A picture that takes longer holds a texture, not text: Tesseract sees hundreds of lines in
/// noise.
constexpr milliseconds kPictureLimit(3000);
/// What it sees in textures and icons scores less.
constexpr float kMinPictureConfidence = 75;

using Language = Tesseract::Language;

std::int64_t areaOf(const PixelBox& box) { return std::int64_t{box.width()} * box.height(); }

bool isInsideOneOf(const std::vector<PixelBox>& boxes, const PixelBox& box) {
  return std::ranges::any_of(boxes, [&](const PixelBox& outer) { return outer.contains(box); });
}

/// Reads the most promising regions first, until the time is up.
class PictureReader {
 public:
  /// Reads until `end` on the clock.
  PictureReader(Clock& clock, Instant end, Tesseract& tesseract, const png::BgrxView& image)
      : clock_(clock), end_(end), tesseract_(tesseract), image_(image) {}

  [[nodiscard]] std::vector<RecognizedLine> read() {
    TextRegions regions = findTextRegions(image_);
    std::vector<PixelBox> insideLarge;
    for (const PixelBox& line : regions.lines) {
      if (isInsideOneOf(regions.large, line)) {
        insideLarge.push_back(line);
      } else {
        readLine(line, 0);
      }
    }
    std::vector<PixelBox> headlines;
    for (const PixelBox& line : regions.large) {
      if (readLine(line, kMinPictureConfidence)) {
        headlines.push_back(line);
      }
    }
    for (const PixelBox& line : insideLarge) {
      // What is inside large letters is a part of them.
      if (!isInsideOneOf(headlines, line)) {
        readLine(line, 0);
      }
    }
    lookTwice();
    // The largest may be a whole screen, the smallest are thumbnails.
    std::ranges::sort(regions.pictures, std::greater<>(), areaOf);
    for (const PixelBox& picture : regions.pictures) {
      readPicture(picture);
    }
    return std::move(lines_);
  }

 private:
  /// A line that may have been misread.
  struct Doubt {
    std::size_t line = 0;  ///< Which of those read.
    PixelBox box;          ///< Where it was looked for.
    std::vector<ReadText> words;
  };

  [[nodiscard]] bool isTimeUp() const { return clock_.now() >= end_; }

  /// At least 1 ms: for Tesseract 0 means no limit.
  [[nodiscard]] milliseconds timeLeft() const {
    return std::max(std::chrono::duration_cast<milliseconds>(end_ - clock_.now()), milliseconds(1));
  }

  /// Reads the line in the box; false when it holds no text of that confidence.
  bool readLine(const PixelBox& box, float minConfidence) {
    if (isTimeUp()) {
      return false;
    }
    const std::optional<LineImage> line = lineImage(image_, box);
    if (!line) {
      return false;
    }
    std::string text;
    float confidence = 100;
    for (const ReadText& part :
         tesseract_.readLine(line->pixels, Language::koreanAndEnglish, timeLeft())) {
      text += (text.empty() ? "" : " ") + part.text;
      confidence = std::min(confidence, part.confidence);
    }
    if (text.empty() || confidence < minConfidence) {
      return false;
    }
    add(std::move(text), line->box, confidence);
    keepDoubts(box);
    return true;
  }

  /// Remembers the line read last if reading it again may improve it.
  void keepDoubts(const PixelBox& box) {
    std::vector<ReadText> words = tesseract_.lastWords();
    const std::string& text = lines_.back().text;
    if (hasDoubtfulWord(text, words) || endsInExtension(text)) {
      doubts_.push_back({lines_.size() - 1, box, std::move(words)});
    }
  }

  /// Reads doubtful lines again in one language. After all others have been read once, which is the
  /// better use of the time when it does not suffice for both.
  void lookTwice() {
    for (const Doubt& doubt : doubts_) {
      const std::optional<LineImage> line = lineImage(image_, doubt.box);
      if (isTimeUp() || !line) {
        return;
      }
      std::string& text = lines_[doubt.line].text;
      if (hasDoubtfulWord(text, doubt.words)) {
        text = withKoreanWords(text, doubt.words, readAgain(line->pixels, Language::korean));
      }
      if (endsInExtension(text)) {
        text = withExtension(text, readAgain(line->pixels, Language::english));
      }
    }
  }

  std::string readAgain(const GrayImage& line, Language language) {
    const std::vector<ReadText> read = tesseract_.readLine(line, language, timeLeft());
    return read.size() == 1 ? read.front().text : "";
  }

  void readPicture(const PixelBox& box) {
    if (isTimeUp() || std::max(box.width(), box.height()) > kMaxSidePx) {
      return;
    }
    const double scale =
        box.height() <= kMaxEnlargedPx / std::max(box.width(), 1) ? kPictureScale : 1;
    const GrayImage pixels = enlarged(grayOf(image_, box), scale);
    for (const ReadText& read :
         tesseract_.readScattered(pixels, std::min(kPictureLimit, timeLeft()))) {
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

  Clock& clock_;
  const Instant end_;
  Tesseract& tesseract_;
  const png::BgrxView& image_;
  std::vector<RecognizedLine> lines_;
  std::vector<Doubt> doubts_;
};

}  // namespace

std::variant<std::vector<RecognizedLine>, std::string> TesseractTextRecognizer::recognize(
    const Image& image) {
  const Instant end = clock_.now() + limit_;
  try {
    const auto pixels = png::bgrxOf(image);
    if (!pixels || pixels->widthPx <= 0 || pixels->heightPx <= 0) {
      return "Text in pictures cannot be read: this picture has no pixels.";
    }
    if (auto missing = tesseract_.prepare()) {
      return std::move(*missing);
    }
    return PictureReader(clock_, end, tesseract_, *pixels).read();
  } catch (const std::exception& error) {
    return std::string("Text in pictures cannot be read: ") + error.what();
  } catch (...) {
    return "Text in pictures cannot be read: Tesseract failed.";
  }
}

}  // namespace tarqo::ocr
