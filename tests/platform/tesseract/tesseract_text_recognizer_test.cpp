#include "platform/tesseract/tesseract_text_recognizer.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>

#include "tests/platform/tesseract/recognizer_support.h"
#include "tests/platform/tesseract/text_picture.h"
#include "tests/platform/tesseract/text_score.h"

namespace tarqo::ocr {
namespace {

namespace fs = std::filesystem;

std::vector<RecognizedLine> linesOf(TesseractTextRecognizer& recognizer, const Image& image) {
  auto result = recognizer.recognize(image);
  if (const auto* error = std::get_if<std::string>(&result)) {
    ADD_FAILURE() << *error;
    return {};
  }
  return std::get<std::vector<RecognizedLine>>(std::move(result));
}

/// On a machine that is busy with other things a page takes long.
constexpr std::chrono::minutes kPatience{2};

/// From left to right.
std::vector<std::string> textsIn(const TextPicture& picture) {
  TesseractTextRecognizer recognizer(realClock());
  std::vector<RecognizedLine> lines = linesOf(recognizer, picture.image());
  std::ranges::stable_sort(lines, {}, [](const RecognizedLine& line) { return line.box.x; });
  std::vector<std::string> texts;
  for (const RecognizedLine& line : lines) {
    texts.push_back(line.text);
  }
  return texts;
}

/// The page of 40 lines, recognised once for all tests of it.
class Page : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    picture_ = std::make_unique<TextPicture>(textpage::kWidthPx, textpage::kHeightPx, 0xFFFFFFU);
    drawn_ = picture_->drawPage();
    TesseractTextRecognizer recognizer(realClock(), {}, kPatience);
    const Instant start = realClock().now();
    lines_ = linesOf(recognizer, picture_->image());
    took_ = realClock().now() - start;
  }
  static void TearDownTestSuite() { picture_.reset(); }

  /// A recognised line in points of the page, as the core maps it.
  static PixelBox boxOf(const RecognizedLine& line) {
    const auto px = [](double share, int size) {
      return static_cast<int>(std::lround(share * size));
    };
    return {px(line.box.minX(), textpage::kWidthPx), px(1 - line.box.maxY(), textpage::kHeightPx),
            px(line.box.maxX(), textpage::kWidthPx), px(1 - line.box.minY(), textpage::kHeightPx)};
  }

  /// What was read where the line was drawn.
  static std::string readAt(const textpage::DrawnLine& drawn) {
    std::string text;
    for (const RecognizedLine& line : lines_) {
      const PixelBox box = boxOf(line);
      const int middle = (box.top + box.bottom) / 2;
      if (middle >= drawn.y && middle < drawn.y + drawn.height &&
          box.left < drawn.x + drawn.width && box.right > drawn.x) {
        text += (text.empty() ? "" : " ") + line.text;
      }
    }
    return text;
  }

  static TextScore ours() {
    std::vector<ReadPair> pairs;
    for (const textpage::DrawnLine& drawn : drawn_) {
      pairs.push_back({drawn.text, readAt(drawn)});
    }
    return score(pairs);
  }

  inline static std::unique_ptr<TextPicture> picture_;
  inline static std::vector<textpage::DrawnLine> drawn_;
  inline static std::vector<RecognizedLine> lines_;
  inline static Duration took_{};
};

double milliseconds(Duration duration) {
  return std::chrono::duration<double, std::milli>(duration).count();
}

TEST_F(Page, IsReadAlmostWithoutFault) {
  const TextScore score = ours();
  std::printf("English %d/%d, Korean %d/%d, characters %.3f, %.0f ms\n", score.english.right,
              score.english.all, score.korean.right, score.korean.all, score.similarity,
              milliseconds(took_));
  EXPECT_GE(score.english.share(), 0.97);
  EXPECT_GE(score.korean.share(), 0.80);
  EXPECT_GE(score.similarity, 0.95);
}

TEST_F(Page, HasItsLinesWhereTheyWereDrawn) {
  EXPECT_EQ(lines_.size(), drawn_.size());
  for (const textpage::DrawnLine& drawn : drawn_) {
    EXPECT_TRUE(std::ranges::any_of(lines_, [&](const RecognizedLine& line) {
      const PixelBox box = boxOf(line);
      return std::abs(box.left - drawn.x) <= 4 && std::abs(box.top - drawn.y) <= 4 &&
             std::abs(box.right - drawn.x - drawn.width) <= 4 &&
             std::abs(box.bottom - drawn.y - drawn.height) <= 4;
    })) << drawn.text;
  }
}

TEST_F(Page, HasConfidencesBetweenNoneAndFull) {
  for (const RecognizedLine& line : lines_) {
    EXPECT_GT(line.confidence, 0.3F) << line.text;
    EXPECT_LE(line.confidence, 1.0F) << line.text;
  }
}

/// What the command of Tesseract reads, line by line.
std::vector<std::string> readByCommand(const TextPicture& picture) {
  const Folder folder;
  std::ofstream(folder.path() / "page.png", std::ios::binary) << picture.asPng();
  const std::string command = "OMP_THREAD_LIMIT=1 tesseract '" +
                              (folder.path() / "page.png").string() + "' '" +
                              (folder.path() / "read").string() + "' -l kor+eng 2>/dev/null";
  EXPECT_EQ(std::system(command.c_str()), 0);
  std::ifstream file(folder.path() / "read.txt");
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) {
    lines.push_back(line);
  }
  return lines;
}

TEST_F(Page, IsReadBetterThanByTheCommandOfTesseract) {
  const Instant start = realClock().now();
  const std::vector<std::string> read = readByCommand(*picture_);
  const Duration took = realClock().now() - start;
  ASSERT_FALSE(read.empty());
  // Generous to the command: it may have read a line anywhere.
  std::vector<ReadPair> pairs;
  for (const textpage::DrawnLine& drawn : drawn_) {
    pairs.push_back({drawn.text, *std::ranges::max_element(read, {}, [&](const auto& line) {
                       return similarity(drawn.text, line);
                     })});
  }
  const TextScore theirs = score(pairs);
  std::printf("tesseract: English %d/%d, Korean %d/%d, characters %.3f, %.0f ms\n",
              theirs.english.right, theirs.english.all, theirs.korean.right, theirs.korean.all,
              theirs.similarity, milliseconds(took));
  const TextScore score = ours();
  EXPECT_GT(score.similarity, theirs.similarity);
  EXPECT_GE(score.english.share(), theirs.english.share());
  EXPECT_GT(score.korean.share(), theirs.korean.share());
}

TEST(TextRecognizer, FindsNoLinesWhereThereIsNoText) {
  EXPECT_TRUE(textsIn(TextPicture(400, 300, 0xFFFFFF)).empty());
  EXPECT_TRUE(textsIn(TextPicture(1, 1, 0)).empty());
}

TEST(TextRecognizer, RefusesAPictureOfAnotherKind) {
  class Foreign final : public PixelData {};
  TesseractTextRecognizer recognizer(realClock());
  const auto result = recognizer.recognize({10, 10, std::make_shared<Foreign>()});
  EXPECT_EQ(std::get<std::string>(result),
            "Text in pictures cannot be read: this picture has no pixels.");
}

TEST(TextRecognizer, ReadsLightTextOnButtons) {
  TextPicture picture(400, 100, 0xF6F5F4);
  picture.fill({20, 20, 120, 56}, 0x3584E4).fill({140, 20, 240, 56}, 0xC01C28);
  picture.write(48, 29, "Apply", 0xFFFFFF);
  picture.write(176, 29, "확인", 0xFFFFFF, "NanumGothic 14px");
  EXPECT_EQ(textsIn(picture), (std::vector<std::string>{"Apply", "확인"}));
}

TEST(TextRecognizer, ReadsLettersAsLargeAsSurfaces) {
  TextPicture picture(1280, 560, 0x102040);
  picture.write(40, 40, "GAME OVER", 0xFFE040, "DejaVu Sans Bold 120px");
  picture.write(60, 300, "게임 시작 12:45", 0xFFFFFF, "NanumGothic Bold 90px");
  picture.write(80, 500, "Press any key to continue", 0xFFFFFF);
  EXPECT_EQ(textsIn(picture), (std::vector<std::string>{"GAME OVER", "게임 시작 12:45",
                                                        "Press any key to continue"}));
}

TEST(TextRecognizer, ReadsTextThatIsAsLightAsItsGround) {
  TextPicture picture(400, 60, 0x008200);
  picture.write(20, 20, "Stop recording now", 0xFF0000);
  EXPECT_EQ(textsIn(picture), (std::vector<std::string>{"Stop recording now"}));
}

/// One that reads on one core, and has loaded already what the first picture needs.
std::unique_ptr<TesseractTextRecognizer> recognizerFor(std::chrono::milliseconds limit) {
  auto recognizer = std::make_unique<TesseractTextRecognizer>(realClock(), std::string(), limit, 1);
  (void)recognizer->recognize(TextPicture(10, 10, 0xFFFFFF).image());
  return recognizer;
}

TEST(TextRecognizer, KeepsWhatItReadWhenTheTimeIsUp) {
  // All of it takes more than 4 s.
  TextPicture picture(1280, 1600, 0xFFFFFF);
  std::size_t drawn = 0;
  for (int y = 10; y < 1570; y += 22) {
    for (const int x : {10, 440, 870}) {
      picture.write(x, y, "Line " + std::to_string(++drawn) + " of many that stand here");
    }
  }
  const auto lines = linesOf(*recognizerFor(std::chrono::seconds(1)), picture.image());
  EXPECT_FALSE(lines.empty());
  EXPECT_LT(lines.size(), drawn);
}

TEST(TextRecognizer, ReadsLinesBeforePicturesWhichMayTakeAllTheTime) {
  // Textures, each of which takes half a second.
  constexpr int kTextures = 18;
  TextPicture picture(300 * kTextures, 340, 0xFFFFFF);
  std::minstd_rand random(1);
  for (int y = 20; y < 270; ++y) {
    for (int x = 20; x < 300 * kTextures; ++x) {
      if (x % 300 >= 20 && x % 300 < 270) {
        picture.fill({x, y, x + 1, y + 1}, static_cast<std::uint32_t>(random() & 0xFFFFFFU));
      }
    }
  }
  picture.write(20, 300, "Photos of the year");
  const auto recognizer = recognizerFor(std::chrono::seconds(3));
  const Image image = picture.image();
  const auto start = std::chrono::steady_clock::now();
  const auto lines = linesOf(*recognizer, image);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(7));
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.front().text, "Photos of the year");
}

TEST(TextRecognizer, ReadsAPictureWithinALimitOrNotAtAll) {
  TextPicture picture(400, 60, 0xFFFFFF);
  const PixelBox whole{0, 0, 400, 60};
  picture.write(20, 20, "Some words to read");
  Tesseract tesseract("");
  ASSERT_EQ(tesseract.prepare(), std::nullopt);
  const GrayImage pixels = enlarged(grayOf(picture.view(), whole), 2);
  EXPECT_TRUE(tesseract.readScattered(pixels, std::chrono::milliseconds(1)).empty());
  EXPECT_EQ(tesseract.readScattered(pixels, std::chrono::minutes(1)).size(), 1U);
}

// The library looks at the time before each word: a line of few may be read before it looks twice.
TEST(TextRecognizer, ReadsALineWithinALimitOrNotAtAll) {
  TextPicture picture(2400, 60, 0xFFFFFF);
  std::string words = "Some words to read";
  for (int more = 0; more < 12; ++more) {
    words += " and some more";
  }
  const PixelBox box = picture.write(20, 20, words);
  Tesseract tesseract("");
  ASSERT_EQ(tesseract.prepare(), std::nullopt);
  const auto line = lineImage(picture.view(), box);
  ASSERT_TRUE(line);
  using Language = Tesseract::Language;
  const auto read = [&](std::chrono::milliseconds limit) {
    return tesseract.readLine(line->pixels, Language::koreanAndEnglish, limit).size();
  };
  EXPECT_EQ(read(std::chrono::minutes(1)), 1U);
  EXPECT_EQ(read(std::chrono::milliseconds(1)), 0U);
}

TEST(TextRecognizer, KeepsTheCellsOfATableApart) {
  TextPicture picture(500, 100, 0xFFFFFF);
  picture.write(20, 20, "Annual report");
  picture.write(200, 20, "244 KB");
  picture.write(320, 20, "문서 파일", 0x202020, "NanumGothic 14px");
  EXPECT_EQ(textsIn(picture), (std::vector<std::string>{"Annual report", "244 KB", "문서 파일"}));
}

TEST(TextRecognizer, ReadsTheExtensionOfAKoreanFileName) {
  TextPicture picture(400, 60, 0xFFFFFF);
  picture.write(20, 20, "프로젝트 계획서.docx");
  EXPECT_EQ(textsIn(picture), (std::vector<std::string>{"프로젝트 계획서.docx"}));
}

TEST_F(Page, IsReadAlikeOnOneCoreAndOnThree) {
  for (const std::size_t cores : {1U, 3U}) {
    TesseractTextRecognizer recognizer(realClock(), {}, kPatience, cores);
    const std::vector<RecognizedLine> lines = linesOf(recognizer, picture_->image());
    ASSERT_EQ(lines.size(), lines_.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
      EXPECT_EQ(lines[i].text, lines_[i].text);
      EXPECT_EQ(lines[i].box, lines_[i].box);
      EXPECT_EQ(lines[i].confidence, lines_[i].confidence);
    }
  }
}

TEST_F(Page, LeavesNoThreadBehind) {
  const auto threads = [] {
    const fs::directory_iterator tasks("/proc/self/task");
    return std::distance(fs::begin(tasks), fs::end(tasks));
  };
  const auto before = threads();
  TesseractTextRecognizer recognizer(realClock(), {}, kPatience, 3);
  EXPECT_EQ(linesOf(recognizer, picture_->image()).size(), lines_.size());
  EXPECT_EQ(threads(), before);
}

}  // namespace
}  // namespace tarqo::ocr
