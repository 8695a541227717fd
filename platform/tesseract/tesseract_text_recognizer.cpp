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

/// A line as it was read.
struct ReadLine {
  std::string text;  ///< Empty when it was not read, or holds nothing.
  PixelBox box{};
  float confidence = 0;         ///< 0...100
  std::vector<ReadText> words;  ///< Of a line that may have been misread.
};

/// Reads the most promising regions first, until the time is up.
class PictureReader {
 public:
  /// Reads until `end` on the clock.
  PictureReader(Clock& clock, Instant end, Readers& readers, const png::BgrxView& image)
      : clock_(clock), end_(end), readers_(readers), image_(image) {}

  [[nodiscard]] std::vector<RecognizedLine> read() {
    TextRegions regions = findTextRegions(image_);
    std::vector<PixelBox> outside;
    std::vector<PixelBox> insideLarge;
    for (const PixelBox& line : regions.lines) {
      (isInsideOneOf(regions.large, line) ? insideLarge : outside).push_back(line);
    }
    readLines(outside, 0);
    const std::vector<PixelBox> headlines = readLines(regions.large, kMinPictureConfidence);
    // What is inside large letters is a part of them.
    std::erase_if(insideLarge,
                  [&](const PixelBox& line) { return isInsideOneOf(headlines, line); });
    readLines(insideLarge, 0);
    lookTwice();
    // The largest may be a whole screen, the smallest are thumbnails.
    std::ranges::sort(regions.pictures, std::greater<>(), areaOf);
    readPictures(regions.pictures);
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

  /// Reads the lines in these boxes; those that hold text of that confidence.
  std::vector<PixelBox> readLines(const std::vector<PixelBox>& boxes, float minConfidence) {
    std::vector<ReadLine> read(boxes.size());
    readers_.forEach(boxes.size(),
                     [&](Tesseract& reader, std::size_t i) { read[i] = lineIn(reader, boxes[i]); });
    std::vector<PixelBox> found;
    for (std::size_t i = 0; i < read.size(); ++i) {
      ReadLine& line = read[i];
      if (!line.text.empty() && line.confidence >= minConfidence) {
        if (!line.words.empty()) {
          doubts_.push_back({lines_.size(), boxes[i], std::move(line.words)});
        }
        add(std::move(line));
        found.push_back(boxes[i]);
      }
    }
    return found;
  }

  [[nodiscard]] ReadLine lineIn(Tesseract& reader, const PixelBox& box) const {
    ReadLine read;
    const std::optional<LineImage> line = isTimeUp() ? std::nullopt : lineImage(image_, box);
    if (!line) {
      return read;
    }
    read.box = line->box;
    read.confidence = 100;
    for (const ReadText& part :
         reader.readLine(line->pixels, Language::koreanAndEnglish, timeLeft())) {
      read.text += (read.text.empty() ? "" : " ") + part.text;
      read.confidence = std::min(read.confidence, part.confidence);
    }
    if (!read.text.empty()) {
      std::vector<ReadText> words = reader.lastWords();
      if (hasDoubtfulWord(read.text, words) || endsInExtension(read.text)) {
        read.words = std::move(words);
      }
    }
    return read;
  }

  /// Reads doubtful lines again in one language. After all others have been read once, which is the
  /// better use of the time when it does not suffice for both.
  void lookTwice() {
    readers_.forEach(doubts_.size(), [this](Tesseract& reader, std::size_t i) {
      const Doubt& doubt = doubts_[i];
      const std::optional<LineImage> line =
          isTimeUp() ? std::nullopt : lineImage(image_, doubt.box);
      if (!line) {
        return;
      }
      const auto readAgain = [&](Language language) {
        const std::vector<ReadText> read = reader.readLine(line->pixels, language, timeLeft());
        return read.size() == 1 ? read.front().text : "";
      };
      std::string& text = lines_[doubt.line].text;
      if (hasDoubtfulWord(text, doubt.words)) {
        text = withKoreanWords(text, doubt.words, readAgain(Language::korean));
      }
      if (endsInExtension(text)) {
        text = withExtension(text, readAgain(Language::english));
      }
    });
  }

  void readPictures(const std::vector<PixelBox>& boxes) {
    std::vector<std::vector<ReadLine>> read(boxes.size());
    readers_.forEach(boxes.size(), [&](Tesseract& reader, std::size_t i) {
      read[i] = linesInPicture(reader, boxes[i]);
    });
    for (std::vector<ReadLine>& lines : read) {
      std::ranges::for_each(lines, [this](ReadLine& line) { add(std::move(line)); });
    }
  }

  [[nodiscard]] std::vector<ReadLine> linesInPicture(Tesseract& reader, const PixelBox& box) const {
    std::vector<ReadLine> lines;
    if (isTimeUp() || std::max(box.width(), box.height()) > kMaxSidePx) {
      return lines;
    }
    const double scale =
        box.height() <= kMaxEnlargedPx / std::max(box.width(), 1) ? kPictureScale : 1;
    const auto inImage = [scale](int px) { return static_cast<int>(px / scale); };
    const GrayImage pixels = enlarged(grayOf(image_, box), scale);
    for (ReadText& read : reader.readScattered(pixels, std::min(kPictureLimit, timeLeft()))) {
      if (read.confidence >= kMinPictureConfidence) {
        lines.push_back({std::move(read.text),
                         {box.left + inImage(read.box.left), box.top + inImage(read.box.top),
                          box.left + inImage(read.box.right), box.top + inImage(read.box.bottom)},
                         read.confidence,
                         {}});
      }
    }
    return lines;
  }

  void add(ReadLine line) {
    const double width = image_.widthPx;
    const double height = image_.heightPx;
    const PixelBox& box = line.box;
    lines_.push_back(
        {std::move(line.text),
         {box.left / width, 1 - box.bottom / height, box.width() / width, box.height() / height},
         std::clamp(line.confidence / 100, 0.0F, 1.0F)});
  }

  Clock& clock_;
  const Instant end_;
  Readers& readers_;
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
    if (auto missing = readers_.prepare()) {
      return std::move(*missing);
    }
    return PictureReader(clock_, end, readers_, *pixels).read();
  } catch (const std::exception& error) {
    return std::string("Text in pictures cannot be read: ") + error.what();
  } catch (...) {
    return "Text in pictures cannot be read: Tesseract failed.";
  }
}

}  // namespace tarqo::ocr
